#include "RulesPage.hpp"

#include <QFile>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "App/dts/PayrollDecimalTime.hpp"
#include "App/model/DecimalJSON.hpp"
#include "App/rules/ProductionRulesets.hpp"
#include "App/rules/RulesetDrafts.hpp"
#include "App/shell/ShellText.hpp"
#include "App/shell/ShellWidgets.hpp"

namespace tessel {
namespace {

constexpr int kindRole = Qt::UserRole + 1;  // the JSON type a leaf was read as
enum LeafKind { textLeaf, otherLeaf, arrayNode, objectNode };

using shell_widgets::now;
using shell_widgets::today;

// Words for the document's keys: "firstMealPenaltyAmount" reads "First meal penalty amount", and a run of
// capitals stays one word ("localDPOrOperatorRuleID" reads "Local DP or operator rule ID").
QString keyLabel(const std::string& key) {
    QStringList words;
    QString word;
    for (std::size_t i = 0; i < key.size(); ++i) {
        const bool upper = std::isupper(static_cast<unsigned char>(key[i]));
        const bool previousLower = i > 0 && !std::isupper(static_cast<unsigned char>(key[i - 1]));
        const bool nextLower = i + 1 < key.size() && std::islower(static_cast<unsigned char>(key[i + 1]));
        const bool previousUpper = i > 0 && std::isupper(static_cast<unsigned char>(key[i - 1]));
        if (upper && !word.isEmpty() && (previousLower || (previousUpper && nextLower))) {
            words << word;
            word.clear();
        }
        word += QChar(key[i]);
    }
    if (!word.isEmpty()) words << word;
    for (qsizetype i = 0; i < words.size(); ++i) {
        QString& w = words[i];
        const bool acronym = w.size() > 1 && w.toUpper() == w;
        if (acronym) continue;
        w = i == 0 ? w.left(1).toUpper() + w.mid(1) : w.toLower();
    }
    return words.join(' ');
}

// What a number of seconds is in payroll hours, beside the value.
QString meaning(const std::string& key, const Json& value) {
    if (!value.is_number_integer() || key.size() < 7 || key.substr(key.size() - 7) != "Seconds") return {};
    return QString("%1 h").arg(qtext(payroll_decimal_time::formatDuration(value.get<std::int64_t>())));
}

}  // namespace

RulesPage::RulesPage(ShellSession& session, QWidget* parent) : QWidget(parent), session_(session) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(8, 8, 8, 8);
    heading_ = new QLabel;
    heading_->setWordWrap(true);
    layout->addWidget(heading_);
    auto* hint = new QLabel(tr("Double-click a value to change it. Times and durations are in seconds, amounts and multipliers "
                               "as decimal text; the whole ruleset is checked when you save."));
    hint->setWordWrap(true);
    hint->setStyleSheet("color: #555;");
    layout->addWidget(hint);
    tree_ = new QTreeWidget;
    tree_->setObjectName("rulesForm");
    tree_->setColumnCount(3);
    tree_->setHeaderLabels({tr("Rule"), tr("Value"), tr("In hours")});
    tree_->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    tree_->setColumnWidth(1, 520);
    tree_->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed | QAbstractItemView::AnyKeyPressed);
    tree_->setAlternatingRowColors(true);
    connect(tree_, &QTreeWidget::itemChanged, this, [this] {
        if (filling_) return;
        edited_ = true;
        showStatus(tr("Unsaved changes"), false);
    });
    layout->addWidget(tree_, 1);
    auto* buttons = new QHBoxLayout;
    auto* importButton = new QPushButton(tr("Import Rules Document\u2026"));
    connect(importButton, &QPushButton::clicked, this, &RulesPage::importDocument);
    auto* exportButton = new QPushButton(tr("Export Rules Document\u2026"));
    connect(exportButton, &QPushButton::clicked, this, &RulesPage::exportDocument);
    auto* revertButton = new QPushButton(tr("Revert"));
    connect(revertButton, &QPushButton::clicked, this, &RulesPage::revert);
    auto* saveButton = new QPushButton(tr("Save Rules"));
    saveButton->setDefault(true);
    connect(saveButton, &QPushButton::clicked, this, [this] { save(); });
    buttons->addWidget(importButton);
    buttons->addWidget(exportButton);
    buttons->addStretch(1);
    buttons->addWidget(revertButton);
    buttons->addWidget(saveButton);
    layout->addLayout(buttons);
    status_ = new QLabel;
    status_->setObjectName("rulesStatus");
    status_->setWordWrap(true);
    layout->addWidget(status_);
    connect(&session_, &ShellSession::productionChanged, this, [this] { edited_ = false; });  // another production's form
    shell_widgets::reloadWhenShown(this, session_, [this] {
        if (!edited_) revert();  // an undo or another page's change; edits in progress are kept
    });
    revert();
}

void RulesPage::revert() {
    edited_ = false;
    status_->clear();
    const auto production = session_.production();
    if (!production) {
        tree_->clear();
        heading_->clear();
        return;
    }
    try {
        ModelContext& context = session_.context();
        const auto revision = ProductionRulesets::currentRevision(context, production->id, today());
        const auto configuration = revision ? ProductionRulesets::readConfiguration(context, production->id, *revision)
                                            : ProductionRulesets::exampleConfiguration(today());
        const QString status = revision ? qtext(ProductionRulesets::setupStatusLine(ProductionRulesets::setupState(context, *revision))) : QString();
        heading_->setText(QString("<span style='font-size: 15pt; font-weight: bold;'>%1</span><br>%2")
                              .arg(tr("Rules \u2014 %1").arg(qtext(configuration.payrollRules.name).toHtmlEscaped()), status.toHtmlEscaped()));
        fill(rules_json::toJSON(configuration));
    } catch (const std::exception& error) {
        showStatus(QString::fromUtf8(error.what()), true);
    }
}

void RulesPage::fill(const Json& document) {
    filling_ = true;
    tree_->clear();
    for (auto it = document.begin(); it != document.end(); ++it) addItems(nullptr, it.key(), it.value());
    for (int i = 0; i < tree_->topLevelItemCount(); ++i) tree_->topLevelItem(i)->setExpanded(true);
    filling_ = false;
}

void RulesPage::addItems(QTreeWidgetItem* parent, const std::string& key, const Json& value) {
    auto* item = parent ? new QTreeWidgetItem(parent) : new QTreeWidgetItem(tree_);
    item->setText(0, keyLabel(key));
    item->setData(0, Qt::UserRole, qtext(key));
    if (value.is_object() || value.is_array()) {
        item->setData(1, kindRole, value.is_object() ? objectNode : arrayNode);
        std::size_t index = 0;
        for (auto it = value.begin(); it != value.end(); ++it, ++index) {
            addItems(item, value.is_object() ? it.key() : std::to_string(index + 1), it.value());
        }
        if (value.is_array()) item->setText(1, value.size() == 1 ? tr("1 item") : tr("%1 items").arg(value.size()));
        return;
    }
    item->setFlags(item->flags() | Qt::ItemIsEditable);
    item->setData(1, kindRole, value.is_string() ? textLeaf : otherLeaf);
    item->setText(1, value.is_string() ? qtext(value.get<std::string>()) : qtext(decimal_json::dump(value)));
    item->setText(2, meaning(key, value));
    item->setForeground(2, Qt::darkGray);
}

Json RulesPage::read(const QTreeWidgetItem* item) const {
    const int kind = item->data(1, kindRole).toInt();
    if (kind == objectNode || kind == arrayNode) {
        Json node = kind == objectNode ? Json::object() : Json::array();
        for (int i = 0; i < item->childCount(); ++i) {
            const auto* child = item->child(i);
            if (kind == objectNode) node[utf8(child->data(0, Qt::UserRole).toString())] = read(child);
            else node.push_back(read(child));
        }
        return node;
    }
    const std::string text = utf8(item->text(1));
    if (kind == textLeaf) return text;
    // A number, true, false or null is read back as JSON; anything else typed there is taken as text,
    // so that a value the rules want as text is not refused for its quotes.
    try {
        return decimal_json::parse<Json>(text.empty() ? "null" : text);
    } catch (const std::exception&) {
        return text;
    }
}

Json RulesPage::document() const {
    Json document = Json::object();
    for (int i = 0; i < tree_->topLevelItemCount(); ++i) {
        const auto* item = tree_->topLevelItem(i);
        document[utf8(item->data(0, Qt::UserRole).toString())] = read(item);
    }
    return document;
}

std::optional<Refusal> RulesPage::save() {
    const auto production = session_.production();
    if (!production) return Refusal{{}, tr("Choose or create a production first.")};
    const Uuid productionID = production->id;
    const Json draft = document();
    const auto refusal = session_.perform(tr("Save Rules"), [&](ModelContext& context) {
        const PayrollRuleConfiguration configuration = rules_json::configuration(draft);
        auto revision = ProductionRulesets::currentRevision(context, productionID, today());
        if (!revision) revision = ProductionRulesets::createDefaultRevision(context, productionID, configuration.payrollRules.effectiveFrom, now());
        ProductionRulesets::apply(context, productionID, *revision, configuration, now());
    });
    if (refusal) {
        showStatus(refusal->title.isEmpty() ? refusal->message : refusal->title + ": " + refusal->message, true);
        return refusal;
    }
    edited_ = false;
    revert();
    showStatus(tr("Saved."), false);
    return std::nullopt;
}

std::optional<Refusal> RulesPage::loadDocument(const QByteArray& bytes) {
    try {
        const Json document = decimal_json::parse<Json>(std::string(bytes.constData(), static_cast<std::size_t>(bytes.size())));
        rules_json::configuration(document);  // only a readable rules document is put into the form
        fill(document);
        edited_ = true;
        showStatus(tr("Imported; review the rules and save them to apply."), false);
        return std::nullopt;
    } catch (...) {
        const Refusal refusal = refusalOf(std::current_exception());
        showStatus(refusal.message, true);
        return refusal;
    }
}

void RulesPage::importDocument() {
    const QString file = QFileDialog::getOpenFileName(this, tr("Import Rules Document"), QString(), tr("Rules document (*.json);;All files (*)"));
    if (file.isEmpty()) return;
    QFile input(file);
    if (!input.open(QIODevice::ReadOnly)) {
        showStatus(tr("The file \u201C%1\u201D could not be read.").arg(file), true);
        return;
    }
    loadDocument(input.readAll());
}

void RulesPage::exportDocument() {
    const QString file = QFileDialog::getSaveFileName(this, tr("Export Rules Document"), "rules.json", tr("Rules document (*.json)"));
    if (file.isEmpty()) return;
    QFile output(file);
    const std::string text = decimal_json::dump(document(), 2) + "\n";
    if (!output.open(QIODevice::WriteOnly | QIODevice::Truncate) || output.write(text.data(), static_cast<qint64>(text.size())) < 0) {
        showStatus(tr("The file \u201C%1\u201D could not be written.").arg(file), true);
        return;
    }
    showStatus(tr("Exported the rules document to \u201C%1\u201D.").arg(file), false);
}

QTreeWidgetItem* RulesPage::item(const QString& path) const {
    const QStringList keys = path.split('.');
    QTreeWidgetItem* found = nullptr;
    for (int i = 0; i < tree_->topLevelItemCount() && !found; ++i) {
        if (tree_->topLevelItem(i)->data(0, Qt::UserRole).toString() == keys.front()) found = tree_->topLevelItem(i);
    }
    for (qsizetype k = 1; k < keys.size() && found; ++k) {
        QTreeWidgetItem* next = nullptr;
        for (int i = 0; i < found->childCount() && !next; ++i) {
            if (found->child(i)->data(0, Qt::UserRole).toString() == keys[k]) next = found->child(i);
        }
        found = next;
    }
    return found;
}

void RulesPage::showStatus(const QString& text, bool refused) {
    status_->setStyleSheet(refused ? "color: #a00000;" : "color: #2b6a2b;");
    status_->setText(text);
}

QString RulesPage::statusText() const { return status_->text(); }

}  // namespace tessel
