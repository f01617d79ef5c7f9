#pragma once

#include <QWidget>

#include <optional>

#include "App/model/JSONFields.hpp"
#include "App/shell/ShellSession.hpp"

class QLabel;
class QTreeWidget;
class QTreeWidgetItem;

namespace tessel {

// The production's ruleset as a form: every section of the rules document (bands, guarantees, sixth and
// seventh days, meal penalty schedules, turnaround, provisions, idle, holiday) with its values editable in
// place. Saving validates the whole ruleset first; a refused save changes nothing and shows the sentence.
// The rules document can be imported from and exported to a file.
class RulesPage : public QWidget {
    Q_OBJECT
public:
    explicit RulesPage(ShellSession& session, QWidget* parent = nullptr);

    bool hasUnsavedChanges() const noexcept { return edited_; }
    // Validates and saves the form; the refusal when refused.
    std::optional<Refusal> save();
    // Reads the stored ruleset into the form again, dropping edits.
    void revert();
    // Puts a rules document into the form (unsaved); the refusal when it is not one.
    std::optional<Refusal> loadDocument(const QByteArray& bytes);
    Json document() const;
    // The leaf at a dotted path ("payrollRules.name"), for the tests and the import.
    QTreeWidgetItem* item(const QString& path) const;
    QString statusText() const;

private:
    void fill(const Json& document);
    void addItems(QTreeWidgetItem* parent, const std::string& key, const Json& value);
    Json read(const QTreeWidgetItem* item) const;
    void showStatus(const QString& text, bool refused);
    void importDocument();
    void exportDocument();

    ShellSession& session_;
    QTreeWidget* tree_ = nullptr;
    QLabel* heading_ = nullptr;
    QLabel* status_ = nullptr;
    bool edited_ = false;
    bool filling_ = false;
};

}  // namespace tessel
