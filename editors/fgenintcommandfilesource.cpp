// SPDX-License-Identifier: Apache-2.0
// The editor of a template: the file on disk that the template was taken from.
#include "fcounted.h"
#include "fdialog.h"
#include "feditor.h"
#include "fgenintcommandfileeditor.h"
#include "fgenintmerge.h"
#include "fhistory.h"
#include "flogmsg.h"
#include "ftheme.h"

#include <QApplication>
#include <QDir>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QTextBlock>

void FGenIntCommandFileEditor::makeNotice(QLayout *layout)
{
    mNotice = new QFrame(this);
    mNotice->setObjectName(QStringLiteral("sourceNotice"));
    auto *row = new QHBoxLayout(mNotice);
    row->setContentsMargins(FTheme::space(3), FTheme::space(1), FTheme::space(2), FTheme::space(1));
    row->setSpacing(FTheme::space(2));
    mNoticeText = new QLabel(mNotice);
    mNoticeText->setObjectName(QStringLiteral("sourceText"));
    mNoticeText->setWordWrap(true);
    row->addWidget(mNoticeText, 1);
    const auto button = [&](const char *name, const QString &text, const QString &tip, auto slot) {
        auto *made = new QPushButton(text, mNotice);
        made->setObjectName(QLatin1String(name));
        made->setToolTip(tip);
        connect(made, &QPushButton::clicked, this, slot);
        row->addWidget(made);
    };
    button("sourceDifference", tr("Show difference"), tr("What the file says and the template not"),
           &FGenIntCommandFileEditor::showDifference);
    button("sourceTake", tr("Take over"), tr("Take the file's text and keep the tags"),
           &FGenIntCommandFileEditor::takeSource);
    button("sourceIgnore", tr("Ignore"), tr("Not tell again until the file changes once more"),
           &FGenIntCommandFileEditor::ignoreSource);
    mNotice->hide();
    layout->addWidget(mNotice);
    connect(qApp, &QGuiApplication::applicationStateChanged, this,
            [this](Qt::ApplicationState now) {
                if (now == Qt::ApplicationActive && isVisible())
                    checkSource();
            });
}

void FGenIntCommandFileEditor::checkSource()
{
    const auto file = commandFile();
    QString text, source;
    const bool isOther = file && file->readChangedSource(&text, &source);
    mNotice->setVisible(isOther);
    if (isOther)
        mNoticeText->setText(tr("%1 has changed on disk since this template was taken from it.")
                                 .arg(QDir::toNativeSeparators(file->sourcePath())));
}

void FGenIntCommandFileEditor::showDifference()
{
    const auto file = commandFile();
    QString text, source;
    commit();
    if (!file || !file->readChangedSource(&text, &source)) {
        checkSource();
        return;
    }
    FDialog dialog(S(tr("What the file says and the template not")), QIcon());
    dialog.setObjectName(QStringLiteral("differenceDialog"));
    auto *view = new FEditor(3, 0);
    view->setObjectName(QStringLiteral("difference"));
    view->setReadOnly(true);
    const QString found = FGenIntMerge::difference(shownForm(file->text()), shownForm(text));
    view->setPlainText(found.isEmpty() ? tr("Lines and tags are the same.") : found);
    QList<QTextEdit::ExtraSelection> marks;
    for (QTextBlock line = view->document()->firstBlock(); line.isValid(); line = line.next()) {
        const QChar kind = line.text().isEmpty() ? QChar(' ') : line.text()[0];
        if (kind != '+' && kind != '-' && kind != '@')
            continue;
        QTextEdit::ExtraSelection one;
        one.cursor = QTextCursor(line);
        one.cursor.select(QTextCursor::LineUnderCursor);
        one.format.setForeground(FTheme::color(kind == '+'   ? "good"
                                               : kind == '-' ? "bad"
                                                             : "muted"));
        marks << one;
    }
    view->setExtraSelections(marks);
    view->setMinimumSize(640, 400);
    dialog.setContent(view);
    dialog.exec();
}

void FGenIntCommandFileEditor::takeSource()
{
    const auto file = commandFile();
    QString text, source;
    commit();
    if (!file || !file->readChangedSource(&text, &source)) {
        checkSource();
        return;
    }
    const FGenIntMerge::Outcome taken = FGenIntMerge::takeOver(file->text(), text);
    {
        FHistoryTransaction step(nullptr, F_TEXT("take over changed file"), true);
        file->setContent(taken.text);
        file->setSource(source);
        step.addStep(file);
    }
    load();
    checkSource();
    if (taken.lost > 0)
        FLogMsg::warning(
            "Template editor", S(counted(taken.lost, tr("%1 tag is gone"), tr("%1 tags are gone"))),
            S(tr("the file has no longer the lines that they stood in; undo brings the "
                 "template back")),
            nullptr);
}

void FGenIntCommandFileEditor::ignoreSource()
{
    const auto file = commandFile();
    QString text, source;
    if (file && file->readChangedSource(&text, &source)) {
        FHistoryTransaction step(nullptr, F_TEXT("ignore changed file"), true);
        file->setSource(source);
    }
    checkSource();
}
