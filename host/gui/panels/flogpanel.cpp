// SPDX-License-Identifier: Apache-2.0
#include "flogpanel.h"

#include "fchanges.h"
#include "ficons.h"
#include "fmanaged.h"
#include "fpaneltable.h"
#include "fselectionset.h"
#include "ftheme.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QHeaderView>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QSplitter>
#include <QVBoxLayout>

int FLogModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(mMessages.size());
}

QVariant FLogModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    static const char *const names[] = {QT_TR_NOOP("Time"), QT_TR_NOOP("Kind"),
                                        QT_TR_NOOP("Source"), QT_TR_NOOP("Message")};
    return tr(names[section]);
}

QVariant FLogModel::data(const QModelIndex &index, int role) const
{
    const FLogMsg::Message &message = at(index.row());
    static const char *const icons[] = {":/logInfo", ":/logWarning", ":/logError"};
    static const char *const words[] = {QT_TR_NOOP("Note"), QT_TR_NOOP("Warning"),
                                        QT_TR_NOOP("Error")};
    const auto level = size_t(message.level);
    switch (role) {
    case Qt::DisplayRole:
        switch (index.column()) {
        case Time:
            return message.time.toLocalTime().toString(QStringLiteral("HH:mm:ss"));
        case Level:
            return tr(words[level]);
        case Source: {
            const auto object = message.object.lock();
            const auto *managed = dynamic_cast<const FManaged *>(object.get());
            return managed ? Q(message.source + " \u00b7 " + managed->getName())
                           : Q(message.source);
        }
        case Text:
            return Q(message.message).replace('\n', ' ');
        default:
            break;
        }
        return {};
    case Qt::DecorationRole:
        return index.column() == Level ? FIcons::icon(QLatin1String(icons[level])) : QVariant();
    case Qt::ToolTipRole:
        return Q(message.message);
    case Qt::ForegroundRole:
        return index.column() == Text ? QVariant() : FTheme::color("muted");
    default:
        return {};
    }
}

void FLogModel::follow()
{
    if (mNext > FLogMsg::count()) { // cleared
        beginResetModel();
        mMessages.clear();
        mNext = 0;
        endResetModel();
    }
    const std::vector<FLogMsg::Message> fresh = FLogMsg::since(mNext, &mNext);
    if (fresh.empty())
        return;
    const int rows = int(mMessages.size());
    beginInsertRows({}, rows, rows + int(fresh.size()) - 1);
    mMessages.insert(mMessages.end(), fresh.begin(), fresh.end());
    endInsertRows();
    if (mMessages.size() > FLogMsg::kKept) {
        const auto surplus = long(mMessages.size() - FLogMsg::kKept);
        beginRemoveRows({}, 0, int(surplus) - 1);
        mMessages.erase(mMessages.begin(), mMessages.begin() + surplus);
        endRemoveRows();
    }
}

FLogPanel::FLogPanel(QWidget *parent)
    : QWidget(parent)
    , mModel(new FLogModel(this))
    , mTable(new FPanelTable(this, tr("No messages.")))
    , mDetails(new QPlainTextEdit(this))
{
    mTable->setObjectName(QStringLiteral("messages"));
    mTable->setAccessibleName(tr("Messages"));
    mTable->setModel(mModel);
    const int letter = fontMetrics().averageCharWidth();
    mTable->setColumnWidth(FLogModel::Time, letter * 13);
    mTable->setColumnWidth(FLogModel::Level, letter * 14);
    mTable->setColumnWidth(FLogModel::Source, letter * 30);
    mDetails->setObjectName(QStringLiteral("messageDetails"));
    mDetails->setAccessibleName(tr("Details of the message"));
    mDetails->setReadOnly(true);
    mDetails->setFrameShape(QFrame::NoFrame);
    mDetails->setTabChangesFocus(true);
    mDetails->hide();
    auto *splitter = new QSplitter(Qt::Horizontal, this);
    splitter->addWidget(mTable);
    splitter->addWidget(mDetails);
    splitter->setStretchFactor(0, 3);
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({750, 250});
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(splitter);
    connect(FChanges::instance(), &FChanges::logChanged, this, &FLogPanel::follow);
    connect(mTable->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            &FLogPanel::showDetails);
    connect(FTheme::instance(), &FTheme::changed, mTable->viewport(),
            qOverload<>(&QWidget::update));
    connect(mTable, &FPanelTable::copyRequested, this, [this] {
        QStringList lines;
        QModelIndexList rows = mTable->selectionModel()->selectedRows();
        std::sort(rows.begin(), rows.end());
        for (const QModelIndex &row : rows) {
            const FLogMsg::Message &message = mModel->at(row.row());
            lines << QStringList{mModel->index(row.row(), FLogModel::Time).data().toString(),
                                 mModel->index(row.row(), FLogModel::Level).data().toString(),
                                 Q(message.source), Q(message.message), Q(message.details)}
                         .join('\t');
        }
        QGuiApplication::clipboard()->setText(lines.join('\n'));
    });
    follow();
}

void FLogPanel::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    follow();
}

void FLogPanel::follow()
{
    if (isVisible()) {
        const QScrollBar *bar = mTable->verticalScrollBar();
        const bool atEnd = bar->value() == bar->maximum();
        mModel->follow();
        if (atEnd)
            mTable->scrollToBottom();
        mCounted = FLogMsg::count();
        if (std::exchange(mUnseen, 0) != 0)
            Q_EMIT unseenChanged(0);
        return;
    }
    // Nobody looks: only what asks for attention is counted.
    if (mCounted > FLogMsg::count()) {
        mCounted = 0;
        mUnseen = 0;
    }
    for (const FLogMsg::Message &message : FLogMsg::since(mCounted, &mCounted))
        mUnseen += message.level != FLogMsg::Level::Info;
    Q_EMIT unseenChanged(mUnseen);
}

void FLogPanel::showDetails()
{
    const QModelIndex row = mTable->currentIndex();
    if (!row.isValid())
        return;
    const FLogMsg::Message &message = mModel->at(row.row());
    QString text = Q(message.message);
    if (!message.details.empty())
        text += "\n\n" + Q(message.details);
    mDetails->setPlainText(text);
    mDetails->setVisible(!message.details.empty() || text.contains('\n'));
    if (const auto object = message.object.lock())
        if (!object->isDestroyed())
            FSelectionSet::instance()->set({FExprBase(object)}, true);
}
