#pragma once

#include <QWidget>

#include "App/rules/RulesLibrary.hpp"
#include "App/shell/ShellSession.hpp"

class QLabel;
class QLineEdit;
class QTableWidget;

namespace tessel {

// The Ruleset Library: rulesets kept on this installation apart from any production, saved from the
// production's rules, applied to it or updated from it, renamed, deleted, and exchanged as ruleset files.
class RulesetLibraryPanel : public QWidget {
    Q_OBJECT
public:
    explicit RulesetLibraryPanel(ShellSession& session, QWidget* parent = nullptr);

    void reload();
    const std::vector<PayrollRulesLibraryItem>& items() const noexcept { return items_; }
    // Each of these acts on the chosen row (`row`), without the question the buttons ask first.
    std::optional<Refusal> saveCurrent(const QString& name);
    std::optional<Refusal> apply(int row);
    std::optional<Refusal> update(int row);
    std::optional<Refusal> rename(int row, const QString& name);
    std::optional<Refusal> remove(int row);
    std::optional<Refusal> exportTo(int row, const QString& path);
    std::optional<Refusal> importFrom(const QString& path);
    QString statusText() const;

private:
    std::optional<Refusal> act(const QString& name, const std::function<QString(ModelContext&)>& action);
    std::optional<PayrollRulesLibraryItem> itemAt(int row) const;
    bool ask(const QString& title, const QString& question);

    ShellSession& session_;
    std::vector<PayrollRulesLibraryItem> items_;
    QTableWidget* table_ = nullptr;
    QLineEdit* name_ = nullptr;
    QLabel* status_ = nullptr;
};

}  // namespace tessel
