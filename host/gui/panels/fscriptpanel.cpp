// SPDX-License-Identifier: Apache-2.0
#include "fscriptpanel.h"

#include "fchanges.h"
#include "fdispatcher.h"
#include "fscriptcompleter.h"
#include "ftheme.h"

#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QVBoxLayout>

namespace {
constexpr int kKeptLines = 5000;

} // namespace

FScriptPanel::FScriptPanel(QWidget *parent)
    : QWidget(parent)
    , mLines(new QPlainTextEdit(this))
    , mField(new QLineEdit(this))
    , mReason(new QLabel(this))
{
    mLines->setObjectName(QStringLiteral("scriptLines"));
    mLines->setAccessibleName(tr("Steps as script"));
    mLines->setReadOnly(true);
    mLines->setTabChangesFocus(true);
    mLines->setLineWrapMode(QPlainTextEdit::NoWrap);
    mLines->setFrameShape(QFrame::NoFrame);
    mLines->setMaximumBlockCount(kKeptLines);
    mLines->setFont(FTheme::fixedFont());
    mLines->setPlaceholderText(tr("Each step appears here as the script line that does it."));
    mField->setObjectName(QStringLiteral("scriptLine"));
    mField->setAccessibleName(tr("Script line"));
    mField->setPlaceholderText(
        tr("A script line, as  height.setValue(0.03);  Ctrl+Space completes"));
    mField->setFont(FTheme::fixedFont());
    mField->installEventFilter(this);
    mReason->setObjectName(QStringLiteral("reason"));
    mReason->setWordWrap(true);
    mReason->hide();
    mCompleter = new FScriptCompleter(mField, FScriptCompleter::Statements);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(mLines);
    auto *below = new QVBoxLayout;
    below->setContentsMargins(FTheme::space(2), FTheme::space(1), FTheme::space(2),
                              FTheme::space(2));
    below->setSpacing(FTheme::space(1));
    below->addWidget(mReason);
    below->addWidget(mField);
    layout->addLayout(below);
    setFocusProxy(mField);
    connect(mField, &QLineEdit::returnPressed, this, &FScriptPanel::execute);
    connect(mField, &QLineEdit::textEdited, mReason, &QWidget::hide);
    connect(
        FChanges::instance(), &FChanges::executed, this,
        [this](const QString &line) { mLines->appendPlainText(line); });
    connect(FChanges::instance(), &FChanges::projectChanged, this, [this](unsigned events) {
        if (events & (FChanges::Opened | FChanges::Closed))
            mLines->clear();
    });
}

void FScriptPanel::execute()
{
    const QString text = mField->text().trimmed();
    if (text.isEmpty())
        return;
    const QString line = text.endsWith(';') || text.endsWith('}') ? text : text + ';';
    const FResult result = FDispatcher::script(S(line));
    if (!result.error.empty()) {
        mReason->setText(Q(result.error.text()));
        mReason->show();
        return; // what was typed stays, to be mended
    }
    mReason->hide();
    if (result.value && !result.value.toPlainString().empty())
        mLines->appendPlainText("= " + Q(result.value.toPlainString()));
    mHistory.removeAll(text);
    mHistory.append(text);
    mPlace = mHistory.size();
    mField->clear();
}

void FScriptPanel::browse(int step)
{
    if (mPlace == mHistory.size())
        mTyped = mField->text();
    const int place = qBound(0, mPlace + step, mHistory.size());
    if (place == mPlace)
        return;
    mPlace = place;
    mField->setText(place == mHistory.size() ? mTyped : mHistory[place]);
}

bool FScriptPanel::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == mField && event->type() == QEvent::KeyPress) {
        const auto *key = static_cast<QKeyEvent *>(event);
        if (!mCompleter->isOpen() && (key->key() == Qt::Key_Up || key->key() == Qt::Key_Down)) {
            browse(key->key() == Qt::Key_Up ? -1 : 1);
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}
