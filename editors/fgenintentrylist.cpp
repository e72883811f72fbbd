// SPDX-License-Identifier: Apache-2.0
#include "fgenintentrylist.h"

#include "fchanges.h"
#include "fcounted.h"
#include "fcustomcomputation.h"
#include "fdefinitiongenint.h"
#include "fgenintcommandfileedit.h"
#include "fgenintcommandfileeditor.h"
#include "fgenintwritercore.h"
#include "ftheme.h"

#include <QHeaderView>

namespace {
constexpr int kSoonMilliseconds = 150;
enum Column { Name, Value, Uses };

/// How often each tag stands in the input templates, and in \p own alone; names case folded.
struct TagCounts
{
    QHash<QString, int> all, here;
};

TagCounts countTags(FDefinitionGenInt &definition, const FGenIntFile *own)
{
    TagCounts counts;
    for (const auto &one : definition.getFiles(0)) {
        const auto file = one.getPtr();
        if (!file)
            continue;
        for (const QString &name : FGenIntTagScanner::names(file->text(), Qt::CaseInsensitive)) {
            const QString folded = FGenIntLineSpans::folded(name);
            ++counts.all[folded];
            if (file.get() == own)
                ++counts.here[folded];
        }
    }
    return counts;
}
} // namespace

FGenIntEntryList::FGenIntEntryList(FGenIntCommandFileEditor *editor)
    : QTreeWidget(editor)
    , mEditor(editor)
{
    setObjectName(QStringLiteral("entryList"));
    setAccessibleName(tr("Entries"));
    setHeaderLabels({tr("Entry"), tr("Value"), tr("Uses")});
    setRootIsDecorated(false);
    setUniformRowHeights(true);
    setFrameShape(QFrame::NoFrame);
    setTextElideMode(Qt::ElideMiddle);
    header()->setStretchLastSection(false);
    header()->setSectionResizeMode(Name, QHeaderView::Stretch);
    header()->setSectionResizeMode(Value, QHeaderView::ResizeToContents);
    header()->setSectionResizeMode(Uses, QHeaderView::Fixed);
    header()->resizeSection(Uses, header()->fontMetrics().horizontalAdvance(tr("Uses")) +
                                      FTheme::space(8));
    headerItem()->setTextAlignment(Value, Qt::AlignRight | Qt::AlignVCenter);
    headerItem()->setTextAlignment(Uses, Qt::AlignRight | Qt::AlignVCenter);
    setMinimumWidth(180);
    mSoon.setSingleShot(true);
    mSoon.setInterval(kSoonMilliseconds);
    connect(&mSoon, &QTimer::timeout, this, &FGenIntEntryList::refresh);
    connect(this, &QTreeWidget::itemClicked, this, &FGenIntEntryList::walk);
    connect(this, &QTreeWidget::itemActivated, this, &FGenIntEntryList::walk);
    connect(FChanges::instance(), &FChanges::changed, this, &FGenIntEntryList::refreshSoon);
}

void FGenIntEntryList::refreshSoon()
{
    if (isVisible() && !mSoon.isActive())
        mSoon.start();
}

void FGenIntEntryList::showEvent(QShowEvent *event)
{
    QTreeWidget::showEvent(event);
    refresh();
}

void FGenIntEntryList::refresh()
{
    const auto definition = mEditor->definition();
    const auto custom = std::dynamic_pointer_cast<FCustomComputation>(mEditor->computation());
    const auto configuration = custom ? custom->getConfiguration().getPtr() : nullptr;
    QVector<QStringList> rows;
    QVector<bool> used;
    if (definition) {
        const TagCounts counts = countTags(*definition, mEditor->file().get());
        for (const auto &one : definition->getNameMap()) {
            const auto entry = one.second.ptr<FEntryDef>();
            if (!entry || entry->isGroup())
                continue;
            QString value;
            if (configuration)
                if (const auto own = configuration->findEntry(one.first))
                    if (const auto object =
                            std::dynamic_pointer_cast<FBasicType>(own->valueObject()))
                        value = Q(object->toPlainString());
            if (value.isEmpty())
                if (const auto object = entry->getDefaultValue().getPtr())
                    value = Q(object->toPlainString());
            const QString name = Q(one.first), folded = FGenIntLineSpans::folded(name);
            const int all = counts.all.value(folded), here = counts.here.value(folded);
            rows << QStringList{name, value, all == 0 ? tr("none") : QString::number(all),
                                tr("%1 here, %2 in all templates").arg(here).arg(all)};
            used << (all > 0);
        }
    }
    // Rows are kept where they are, with the selection.
    while (topLevelItemCount() > rows.size())
        delete takeTopLevelItem(rows.size());
    for (int i = 0; i < rows.size(); ++i) {
        QTreeWidgetItem *item = topLevelItem(i);
        if (!item) {
            item = new QTreeWidgetItem(this);
            item->setTextAlignment(Value, Qt::AlignRight | Qt::AlignVCenter);
            item->setTextAlignment(Uses, Qt::AlignRight | Qt::AlignVCenter);
        }
        const QColor colour = FTheme::color(used[i] ? "text" : "muted");
        for (int column : {Name, Value, Uses}) {
            item->setText(column, rows[i][column]);
            item->setToolTip(column, rows[i][Name] + '\n' + rows[i].last());
            item->setForeground(column, colour);
        }
    }
}

void FGenIntEntryList::walk(QTreeWidgetItem *item)
{
    if (item)
        mEditor->edit()->goToTag(item->text(Name));
}
