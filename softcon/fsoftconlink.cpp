// SPDX-License-Identifier: Apache-2.0
#include "fsoftconlink.h"

#include "fbasictype.h"
#include "fgenintresultsfile.h"
#include "fhistory.h"
#include "ficons.h"
#include "fio.h"
#include "fobjectmanager.h"
#include "fsoftconentryitems.h"
#include "fsoftconscene.h"
#include "fsoftcontemplateitems.h"
#include "fsoftconview.h"
#include "ftext.h"
#include "fworkspace.h"

#include <QBoxLayout>
#include <QPushButton>
#include <QTreeWidget>

namespace {
/// The bare file name of an expression for one.
std::string fileNameOf(const std::string &connection)
{
    std::string name = connection.substr(connection.rfind('(') + 1);
    name = name.substr(0, name.find(')'));
    if (!name.empty() && name.front() == '"')
        name.erase(0, 1);
    if (!name.empty() && name.back() == '"')
        name.pop_back();
    return name;
}
} // namespace

FSoftConConnectConnectorDialog::FSoftConConnectConnectorDialog(
    QWidget *parent, const std::shared_ptr<FSoftwareConnector> &connector)
    : QDialog(parent)
    , mConnector(connector)
{
    init();
}

void FSoftConConnectConnectorDialog::init()
{
    setModal(true);
    setWindowTitle(QStringLiteral("Connect other Software Connector"));
    resize(420, 360);
    auto *column = new QVBoxLayout(this);
    mTree = new QTreeWidget(this);
    mTree->setHeaderLabel(QStringLiteral("Name"));
    mTree->setSelectionMode(QAbstractItemView::ExtendedSelection);
    mTree->setAccessibleName(tr("Files of other connectors"));
    column->addWidget(mTree);
    for (const auto &one : getManageds<FSoftwareConnector>()) {
        const auto connector = one.getPtr();
        const auto computation = connector ? connector->getComputation().getPtr() : nullptr;
        if (!computation || connector == mConnector)
            continue;
        auto *top =
            new QTreeWidgetItem(mTree, {Q(connector->getName() + "/" + computation->getName())});
        top->setIcon(0, FIcons::icon(QStringLiteral(":/softConIcon")));
        top->setFlags(Qt::ItemIsEnabled);
        addRows(top, *connector);
        top->setExpanded(true);
    }
    auto *row = new QHBoxLayout;
    mAddButton = new QPushButton(QStringLiteral("Add"), this);
    mAddButton->setEnabled(false);
    connect(mAddButton, &QPushButton::clicked, this, &QDialog::accept);
    row->addWidget(mAddButton);
    row->addStretch();
    auto *cancel = new QPushButton(QStringLiteral("Cancel"), this);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    row->addWidget(cancel);
    column->addLayout(row);
    connect(mTree, &QTreeWidget::currentItemChanged, this,
            &FSoftConConnectConnectorDialog::currentItemChanged);
}

void FSoftConConnectConnectorDialog::addRows(QTreeWidgetItem *top,
                                             const FSoftwareConnector &connector)
{
    const FSoftConScene *scene = connector.scene();
    if (!scene)
        return;
    const std::string results = connector.getComputation()->getName() + ".getResults().";
    const auto add = [&](const QString &text, const char *icon, const std::string &connection) {
        auto *row = new QTreeWidgetItem(top, {text});
        row->setIcon(0, FIcons::icon(QLatin1String(icon)));
        row->setData(0, Qt::UserRole, Q(connection));
    };
    for (QGraphicsItem *one : scene->items()) {
        if (const auto *file = dynamic_cast<FSoftConImportItem *>(one)) {
            const auto entry = file->getItemObject().ptr<FEntry>();
            const auto value = entry ? entry->getValue().ptr<FResultsFileName>() : nullptr;
            if (!value)
                continue;
            const std::string text = value->getFileName().toString(nullptr);
            add(Q(text).mid(1).chopped(text.size() > 1 ? 1 : 0), ":/softConExport_Small",
                results + "getResultFileName(" + text + ")");
        } else if (const auto *sample = dynamic_cast<FSoftConOutputTemplateItem *>(one)) {
            if (const auto object = sample->getItemObject().ptr<FGenIntResultsFile>())
                add(object->getFileName(), ":/softConTemplate_Small",
                    results + "getResultTemplateName(" +
                        FLiteral::quoted(S(object->getFileName())) + ")");
        }
    }
}

std::vector<std::string> FSoftConConnectConnectorDialog::getChosenConnectionString() const
{
    std::vector<std::string> chosen;
    if (mTree)
        for (const QTreeWidgetItem *row : mTree->selectedItems())
            chosen.push_back(S(row->data(0, Qt::UserRole).toString()));
    return chosen;
}

void FSoftConConnectConnectorDialog::currentItemChanged(QTreeWidgetItem *current, QTreeWidgetItem *)
{
    mAddButton->setEnabled(current && !current->data(0, Qt::UserRole).isNull());
}

void FSoftwareConnector::connectOtherConnector()
{
    FSoftConConnectConnectorDialog dialog(FWorkspace::instance()->window(),
                                          shared_from_base<FSoftwareConnector>());
    if (dialog.exec() != QDialog::Accepted)
        return;
    const FHistoryTransaction step(nullptr, F_TEXT("Add input file"), true);
    FSoftConScene *overview = scene();
    if (!overview)
        return;
    for (const std::string &connection : dialog.getChosenConnectionString()) {
        FHistorySavepoint one((std::string()));
        // The class of a switch marks a link.
        auto *item = dynamic_cast<FSoftConObjectItem *>(
            overview->createItem(nullptr, FExpr<FObject>(FBool::mpNull), "", ""));
        const auto entry = item ? item->getItemObject().ptr<FEntry>() : nullptr;
        const auto file = entry ? entry->getValue().ptr<FInputFile>() : nullptr;
        const FExprBase name = FExprBase::resolve(connection);
        if (!file || !name)
            return;
        if (file->hasClient(name.getExpr(), true)) {
            one.rollback();
            FIO::instance()->warning(FWorkspace::instance()->window(), "Recursion",
                                     "Infinite recursion detected. Could not set new input file.",
                                     "", "", "", 0, 259);
            return;
        }
        entry->setValue(FExprBase(f_make_shared<FInputFile>(name, file->getDirectory())));
        item->updateItem(); // names the entry after the expression; from now on the name stands
        if (const auto definition = entry->getEntryDefinition().getPtr())
            definition->setName(fileNameOf(connection));
    }
}

FExpr<FString> FSoftwareConnector::chooseResultsFile()
{
    FSoftConConnectConnectorDialog dialog(FWorkspace::instance()->window(), nullptr);
    if (dialog.exec() != QDialog::Accepted)
        return {};
    const std::vector<std::string> chosen = dialog.getChosenConnectionString();
    return chosen.empty() ? FExpr<FString>() : FExpr<FString>(f_make_shared<FString>(chosen[0]));
}
