// SPDX-License-Identifier: Apache-2.0
#include "fscriptcompleter.h"

#include "fcmdmanager.h"
#include "fmarloctrl.h"
#include "fobjectmanager.h"
#include "foperators.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QDataStream>
#include <QDropEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QRegularExpression>
#include <QSet>
#include <QStringListModel>

namespace {
constexpr int kShortest = 2; // letters after which a word is completed by itself

bool isWordLetter(QChar c) { return c.isLetterOrNumber() || c == '_'; }

int wordBegin(const QString &text, int cursor)
{
    while (cursor > 0 && isWordLetter(text[cursor - 1]))
        --cursor;
    return cursor;
}
} // namespace

QStringList FScriptCompleter::candidates(const QString &text, What what)
{
    QSet<QString> found;
    const FCmdManager *registry = FCmdManager::instance();
    static const QRegularExpression behindDot(
        QStringLiteral("([A-Za-z_](?:[A-Za-z0-9_.]|\\([^()]*\\))*)\\.[A-Za-z0-9_]*$"));
    const auto match = behindDot.match(text);
    if (match.hasMatch()) {
        const FExprBase receiver = FExprBase::resolve(S(match.captured(1)));
        const FClassInfo *klass = receiver ? receiver.valueClass() : nullptr;
        if (!klass)
            return {};
        for (const auto &info : registry->all())
            if (info->receiver && info->kind != FCommandKind::Creator &&
                klass->isA(*info->receiver) && !registry->isHidden(*klass, *info) &&
                (what == Statements || info->isConst()))
                found.insert(Q(info->name));
    } else {
        for (const auto &object : FObjectManager::instance()->all())
            if (object->isTreeRow())
                found.insert(Q(object->getName()));
        for (const auto &info : registry->all())
            if (info->systemFlag == 0 &&
                (what == Statements
                     ? info->kind == FCommandKind::Global || info->kind == FCommandKind::Creator
                     : info->kind == FCommandKind::Global && info->pure))
                found.insert(Q(info->name));
    }
    QStringList list = found.values();
    list.sort(Qt::CaseInsensitive);
    return list;
}

FScriptCompleter::FScriptCompleter(QLineEdit *field, What what)
    : QObject(field)
    , mField(field)
    , mCompleter(new QCompleter(this))
    , mWhat(what)
{
    mCompleter->setModel(new QStringListModel(mCompleter));
    mCompleter->setCaseSensitivity(Qt::CaseInsensitive);
    mCompleter->setWidget(field);
    field->installEventFilter(this);
    field->setAcceptDrops(true);
    connect(mCompleter, qOverload<const QString &>(&QCompleter::activated), this,
            &FScriptCompleter::insert);
    connect(field, &QLineEdit::textEdited, this, [this](const QString &text) {
        const int cursor = mField->cursorPosition();
        const int begin = wordBegin(text, cursor);
        const bool behindDot = begin > 0 && text[begin - 1] == '.';
        const bool isWord = cursor > begin && text[begin].isLetter();
        if ((behindDot && (cursor == begin || isWord)) || (isWord && cursor - begin >= kShortest))
            complete();
        else
            mCompleter->popup()->hide();
    });
}

bool FScriptCompleter::isOpen() const { return mCompleter->popup()->isVisible(); }

void FScriptCompleter::insert(const QString &word)
{
    const QString text = mField->text();
    const int cursor = mField->cursorPosition(), begin = wordBegin(text, cursor);
    mField->setText(text.left(begin) + word + text.mid(cursor));
    mField->setCursorPosition(begin + word.size());
    Q_EMIT mField->textEdited(mField->text());
    mCompleter->popup()->hide();
}

void FScriptCompleter::complete()
{
    const QString before = mField->text().left(mField->cursorPosition());
    const QString prefix = before.mid(wordBegin(before, before.size()));
    static_cast<QStringListModel *>(mCompleter->model())->setStringList(candidates(before, mWhat));
    mCompleter->setCompletionPrefix(prefix);
    if (mCompleter->completionCount() == 0 ||
        (mCompleter->completionCount() == 1 && mCompleter->currentCompletion() == prefix)) {
        mCompleter->popup()->hide();
        return;
    }
    QRect place = mField->inputMethodQuery(Qt::ImCursorRectangle).toRect();
    place.setWidth(240);
    mCompleter->complete(place);
}

bool FScriptCompleter::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::KeyPress) {
        const auto *key = static_cast<QKeyEvent *>(event);
        if (key->key() == Qt::Key_Space && key->modifiers() & Qt::ControlModifier) {
            complete();
            return true;
        }
        // The list takes these first; the field must not commit or give up meanwhile.
        if (isOpen() && (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter ||
                         key->key() == Qt::Key_Escape || key->key() == Qt::Key_Tab)) {
            const QModelIndex chosen = mCompleter->popup()->currentIndex();
            mCompleter->popup()->hide();
            if (key->key() == Qt::Key_Escape)
                return true;
            if (chosen.isValid()) {
                insert(chosen.data().toString());
                return true;
            }
        }
    } else if (event->type() == QEvent::DragEnter || event->type() == QEvent::Drop) {
        auto *drop = static_cast<QDropEvent *>(event);
        const QString type = FMarloCtrl::instance()->getFObjectMimeType();
        if (drop->mimeData()->hasFormat(type)) {
            drop->acceptProposedAction();
            if (event->type() == QEvent::DragEnter)
                return true;
            // Its text is the name, one a line.
            mField->insert(drop->mimeData()->text().section('\n', 0, 0));
            Q_EMIT mField->textEdited(mField->text());
            mField->setFocus();
            return true;
        }
    }
    return QObject::eventFilter(watched, event);
}
