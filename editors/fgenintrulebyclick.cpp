// SPDX-License-Identifier: Apache-2.0
// The editor of a result template: a rule out of a click on a number of the sample.
#include "fcounted.h"
#include "fgenintreader.h"
#include "fgenintreadercore.h"
#include "fgenintresultsfileedit.h"
#include "fgenintresultsfileeditor.h"
#include "fgenintruleproposals.h"
#include "fgeninttext.h"
#include "fhistory.h"

#include <QAction>
#include <QComboBox>
#include <QLineEdit>
#include <QMenu>
#include <QPointer>
#include <QScopedValueRollback>
#include <QTextBlock>
#include <QThreadPool>
#include <QToolTip>

namespace {
constexpr int kShownAnchor = 40;
constexpr qint64 kReadOfRuns = 512 << 20; // bytes of the files of runs that are tried

QString described(const FGenIntRule &rule)
{
    QString anchor = QString::fromStdString(rule.anchor).simplified();
    if (anchor.size() > kShownAnchor)
        anchor = anchor.left(kShownAnchor - 1) + QChar(0x2026);
    QString place;
    if (anchor.isEmpty())
        place =
            rule.line < 0
                ? QCoreApplication::translate("RuleByClick", "line %1 from the end").arg(-rule.line)
                : QCoreApplication::translate("RuleByClick", "line %1 of the file")
                      .arg(rule.line + 1);
    else if (rule.line == 0)
        place = QCoreApplication::translate("RuleByClick", "behind \u201c%1\u201d").arg(anchor);
    else
        place =
            (rule.line < 0 ? QCoreApplication::translate("RuleByClick", "%1 above \u201c%2\u201d")
                           : QCoreApplication::translate("RuleByClick", "%1 below \u201c%2\u201d"))
                .arg(counted(qAbs(rule.line), QCoreApplication::translate("RuleByClick", "%1 line"),
                             QCoreApplication::translate("RuleByClick", "%1 lines")),
                     anchor);
    if (rule.column > 0)
        place += QCoreApplication::translate("RuleByClick", ", column %1").arg(rule.column);
    if (!anchor.isEmpty())
        place += rule.first ? QCoreApplication::translate("RuleByClick", ", first occurrence")
                            : QCoreApplication::translate("RuleByClick", ", last occurrence");
    return place;
}

/// A name for a value out of the words of its anchor; empty if there are none.
QString nameFor(const FGenIntRule &rule)
{
    QString name = QString::fromStdString(rule.anchor).simplified();
    name.replace(QRegExp(QStringLiteral("[^A-Za-z0-9]+")), QStringLiteral("_"));
    while (name.size() > 30 && name.contains('_'))
        name.truncate(name.lastIndexOf('_'));
    name = name.left(30);
    while (name.endsWith('_'))
        name.chop(1);
    while (name.startsWith('_') || (!name.isEmpty() && name[0].isDigit()))
        name.remove(0, 1);
    return name;
}

/// What the rules give in the files of runs, in words for each rule.
QStringList triedOn(const QStringList &files, const QVector<FGenIntRule> &rules,
                    const FGenIntColumns &columns, const QVector<double> &inSample)
{
    QVector<int> same(rules.size()), other(rules.size()), missing(rules.size());
    qint64 bytes = 0;
    int tried = 0;
    for (const QString &run : files) {
        QString why;
        const auto text = FGenIntText::fromFile(run.section('\n', 1), &why);
        bytes += text ? text->size() : 0;
        if (bytes > kReadOfRuns)
            break;
        ++tried;
        QVector<double> values(rules.size(), std::nan(""));
        if (text && !text->isEmpty())
            for (const FGenIntReading &reading : FGenIntReaderCore(*text).read(rules, columns))
                values[reading.rule] = reading.value;
        for (int i = 0; i < rules.size(); ++i)
            ++(std::isnan(values[i]) ? missing : values[i] == inSample[i] ? same : other)[i];
    }
    QStringList words;
    for (int i = 0; i < rules.size(); ++i)
        words << (tried == 0 ? QString()
                             : QCoreApplication::translate("RuleByClick",
                                                           "%1: %2 same, %3 other, %4 missing")
                                   .arg(counted(
                                       tried, QCoreApplication::translate("RuleByClick", "%1 run"),
                                       QCoreApplication::translate("RuleByClick", "%1 runs")))
                                   .arg(same[i])
                                   .arg(other[i])
                                   .arg(missing[i]));
    return words;
}

} // namespace

void FGenIntResultsFileEditor::readValueAt(int position, const QPoint &place)
{
    const auto file = resultsFile();
    if (!file || !isLoaded())
        return;
    const FGenIntColumns columns = FGenIntReader::columnsOf(*file);
    const QVector<FGenIntRule> rules = FGenIntRuleProposals::propose(mShown, position, columns);
    if (rules.isEmpty()) {
        QToolTip::showText(place, tr("There is no number here that a rule can read."), mEdit);
        return;
    }
    QVector<double> values(rules.size(), std::nan(""));
    for (const FGenIntReading &reading : FGenIntReaderCore(text()).read(rules, columns))
        values[reading.rule] = reading.value;

    const QPointer<QMenu> menu(new QMenu(this));
    menu->setObjectName(QStringLiteral("ruleMenu"));
    QAction *title = menu->addAction(tr("Read %1").arg(QString::number(values[0], 'g', 10)));
    title->setEnabled(false);
    menu->addSeparator();
    for (int i = 0; i < rules.size(); ++i) {
        QAction *action = menu->addAction(described(rules[i]).replace('&', "&&"));
        action->setData(i);
        if (i == 0) {
            QFont font = menu->font();
            font.setBold(true);
            action->setFont(font);
            menu->setActiveAction(action);
        }
    }
    // The runs are read meanwhile.
    QThreadPool::globalInstance()->start([menu, rules, columns, values, files = runFiles()] {
        const QStringList words = triedOn(files, rules, columns, values);
        QMetaObject::invokeMethod(qApp, [menu, words] {
            for (QAction *action : menu ? menu->actions() : QList<QAction *>())
                if (action->data().isValid() && !words[action->data().toInt()].isEmpty())
                    action->setText(action->text() + '\t' + words[action->data().toInt()]);
        });
    });
    const QPointer<FGenIntResultsFileEditor> self(this);
    const QAction *chosen = menu->exec(place);
    const int index = chosen && chosen->data().isValid() ? chosen->data().toInt() : -1;
    if (menu)
        menu->deleteLater();
    if (self && index >= 0)
        addRule(rules[index]);
}

void FGenIntResultsFileEditor::addRule(const FGenIntRule &rule)
{
    const auto file = resultsFile();
    if (!file)
        return;
    {
        const QScopedValueRollback<bool> own(mOwnChange, true);
        FHistoryTransaction step(nullptr, F_TEXT("add results value"), true);
        QString name = nameFor(rule);
        for (int n = 1; !name.isEmpty() && file->getValue(name); ++n)
            name = nameFor(rule) + '_' + QString::number(n);
        file->addValue(name, rule.line, rule.column, Q(rule.anchor),
                       mOccurrence->itemText(rule.first ? 0 : 1), rule.average, {});
        step.addStep(file);
    }
    refreshValuesSelector();
    refreshResultsPreview();
    refreshValue();
    enableValue();
}
