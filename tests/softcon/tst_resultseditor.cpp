// SPDX-License-Identifier: Apache-2.0
// The editor of a result template: rules, what they read, and where that is marked.
#include "fdesign.h"
#include "feditor.h"
#include "fgenintreader.h"
#include "fgenintreadercore.h"
#include "fgenintresultsfileeditor.h"
#include "fgeninttext.h"
#include "fparameter.h"
#include "fpathmanager.h"
#include "fspinbox.h"
#include "testseed.h"
#include "workbench.h"

class TestResultsEditor : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { Workbench::once(mFolder.path()); }
    void init() { make("a 1 2\n\n total force = 12.5 N\nx y 7abc 9\n 4 5 6\n"); }
    void cleanup()
    {
        mFile.reset();
        mBench.reset();
    }
    void controlsWriteTheRule();
    void valuesComeAndGo();
    void parametersFollowTheName();
    void averages();
    void marksAgreeWithTheReader();
    void marksByTheSteps();
    void ruleByClick();
    void doubtIsSeen();
    void triedOnARun();
    void longSample();
    void endlessExpression();

private:
    template <class T>
    T *child(const char *name) const
    {
        return mEditor->findChild<T *>(QLatin1String(name));
    }
    QTableWidget *table() const { return child<QTableWidget>("resultsPreview"); }
    std::shared_ptr<FGenIntResultsFileValue> value() const
    {
        return mFile->getCurrentValue().getPtr();
    }
    void make(const QString &sample)
    {
        mBench = std::make_unique<Workbench>();
        mFile = mBench->connector()->addOutputTemplateFromString(S(sample), "out.dat").getPtr();
        Workbench::turn();
        show();
    }
    void show()
    {
        mBench->connector()->gotoTab(
            FExpr<FGenIntFile>(std::static_pointer_cast<FGenIntFile>(mFile)));
        Workbench::turn();
        mEditor = qobject_cast<FGenIntResultsFileEditor *>(
            mBench->connector()->tabWidget()->currentWidget());
        QVERIFY(mEditor && mEditor->isVisible());
    }
    void rule(const char *name, int line, int column, const char *anchor, const char *occurrence)
    {
        mFile->addValue(name, line, column, anchor, occurrence, false, {});
        Workbench::turn();
    }
    QString marked(const FGenIntMarks::Span &span) const
    {
        return FTemplateTab::textOf(mEditor->editor()).mid(span.begin, span.length);
    }
    std::unique_ptr<Workbench> mBench;
    std::shared_ptr<FGenIntResultsFile> mFile;
    FGenIntResultsFileEditor *mEditor = nullptr;
    QTemporaryDir mFolder;
};

void TestResultsEditor::controlsWriteTheRule()
{
    QCOMPARE(table()->item(0, 0)->text(), QStringLiteral("please add a value"));
    QVERIFY(!child<FSpinBox>("valueLine")->isEnabled());
    QTest::mouseClick(child<QToolButton>("addValue"), Qt::LeftButton);
    QVERIFY(value());
    QCOMPARE(value()->mName, std::string("ResultsValue_00"));
    QVERIFY(child<FSpinBox>("valueLine")->isEnabled());
    struct Step
    {
        const char *title;
        std::function<void()> act;
    };
    auto *line = child<FSpinBox>("valueLine"), *column = child<FSpinBox>("valueColumn");
    auto *anchor = child<QLineEdit>("valueAnchor");
    auto *occurrence = child<QComboBox>("valueOccurrence");
    const Step steps[] = {
        {"change line", [&] { line->setValue(2); }},
        {"change column", [&] { QTest::keyClick(column, Qt::Key_Up); }},
        {"change anchor",
         [&] {
             anchor->setFocus();
             anchor->selectAll();
             QTest::keyClicks(anchor, "total");
             QTest::keyClick(anchor, Qt::Key_Return);
         }},
        {"change occurrence to first", [&] { occurrence->setCurrentIndex(0); }},
        {"change occurrence to last", [&] { occurrence->setCurrentIndex(1); }},
        {"change column separator",
         [&] { QTest::mouseClick(child<QRadioButton>("customSeparator"), Qt::LeftButton); }},
        {"change column separator",
         [&] { QTest::mouseClick(child<QCheckBox>("spacesAndTabs"), Qt::LeftButton); }},
        {"template path changed",
         [&] {
             auto *path = child<QLineEdit>("subfolder");
             path->setText("sub");
             path->setModified(true);
             Q_EMIT path->editingFinished();
         }},
        {"change value type", [&] { child<QComboBox>("valueType")->setCurrentIndex(1); }},
    };
    FHistory *history = FHistory::instance();
    const size_t before = history->stepCount();
    size_t count = 0;
    for (const Step &step : steps) {
        step.act();
        Workbench::turn();
        QCOMPARE(history->stepCount(), before + ++count);
        QCOMPARE(history->undoText(), std::string(step.title));
    }
    QCOMPARE(value()->mLine, 2);
    QCOMPARE(value()->mColumn, 1);
    QCOMPARE(value()->mAnchor, std::string("total"));
    QVERIFY(!mFile->getNumberSeparator() && mFile->getSpacesAndTabsSeparator());
    QCOMPARE(mFile->getFileName(), QStringLiteral("sub/out.dat"));
    QCOMPARE(child<QLineEdit>("subfolder")->text(), QStringLiteral("sub/"));
    QVERIFY(child<QComboBox>("importType")->isVisible());
    QCOMPARE(mBench->connector()->tabWidget()->tabText(1), QStringLiteral("sub/out.dat"));
    // An expression that nobody could compile is refused and stays to be mended.
    auto *expression = child<QLineEdit>("regExpSeparator");
    expression->setText("(((a{99}){99}){99}){99}");
    Q_EMIT expression->editingFinished();
    QCOMPARE(mFile->getRegExprSeparator(), QString());
    QVERIFY(child<QLabel>("doubt")->isVisible());
    while (history->stepCount() > before)
        Workbench::act("editUndo");
    QCOMPARE(line->value(), 0);
    QCOMPARE(anchor->text(), QString());
    QVERIFY(child<QRadioButton>("findNumbers")->isChecked());
    QVERIFY(!child<QComboBox>("importType")->isVisible());
    Workbench::act("editRedo");
    QCOMPARE(line->value(), 2);
}

void TestResultsEditor::valuesComeAndGo()
{
    rule("third", 4, 0, "", "First");
    rule("first", 0, 0, "", "First");
    rule("second", 0, 0, "force", "First");
    auto *selector = child<QComboBox>("valueName");
    QCOMPARE(selector->count(), 3);
    QStringList names;
    for (int i = 0; i < 3; ++i)
        names << selector->itemText(i);
    QCOMPARE(names, (QStringList{"first", "third", "second"})); // as they are read
    QCOMPARE(table()->rowCount(), 3);
    QCOMPARE(table()->verticalHeaderItem(2)->text(), QStringLiteral("second"));
    QCOMPARE(table()->item(2, 0)->text(), QStringLiteral("12.5"));
    QCOMPARE(table()->item(2, 1)->text(), QStringLiteral("FDouble"));
    // A click selects; the selection comes back with undo.
    const auto click = [this](int row) {
        QTest::mouseClick(table()->viewport(), Qt::LeftButton, {},
                          table()->visualItemRect(table()->item(row, 0)).center());
        Workbench::turn();
    };
    click(0);
    QCOMPARE(value()->mName, std::string("first"));
    QCOMPARE(selector->currentText(), QStringLiteral("first"));
    click(1);
    QCOMPARE(child<FSpinBox>("valueLine")->value(), 4);
    Workbench::act("editUndo");
    QCOMPARE(value()->mName, std::string("second"));
    QCOMPARE(selector->currentText(), QStringLiteral("second"));
    // Deleting goes to the one above, the first one to the second.
    QTest::mouseClick(child<QToolButton>("deleteValue"), Qt::LeftButton);
    QCOMPARE(selector->currentText(), QStringLiteral("third"));
    click(0);
    QTest::mouseClick(child<QToolButton>("deleteValue"), Qt::LeftButton);
    QCOMPARE(selector->currentText(), QStringLiteral("third"));
    QTest::mouseClick(child<QToolButton>("deleteValue"), Qt::LeftButton);
    QCOMPARE(selector->count(), 0);
    QVERIFY(!selector->isEnabled());
    QCOMPARE(table()->item(0, 0)->text(), QStringLiteral("please add a value"));
    Workbench::act("editUndo");
    QCOMPARE(selector->currentText(), QStringLiteral("third"));
    // What can't be read says so, and makes no parameter.
    child<FSpinBox>("valueColumn")->setValue(99);
    QTRY_COMPARE(table()->item(0, 0)->text(), QStringLiteral("not a number"));
    QVERIFY(!table()->cellWidget(0, 2)->isEnabled());
}

void TestResultsEditor::parametersFollowTheName()
{
    rule("force", 0, 0, "force", "First");
    auto *button = qobject_cast<QToolButton *>(table()->cellWidget(0, 2));
    QVERIFY(button && button->isEnabled());
    QTest::mouseClick(button, Qt::LeftButton);
    Workbench::turn();
    const auto find = [](const char *name) {
        return std::dynamic_pointer_cast<FParameter>(FObjectManager::instance()->find(name));
    };
    const auto plain = find("eval_force");
    QVERIFY(plain);
    const std::string reference = plain->getValue().toString();
    FDispatcher::script("parameter twice(" + reference + " + " + reference + ");");
    Workbench::turn();
    const auto twice = find("twice");
    QVERIFY(twice);
    const size_t steps = FHistory::instance()->stepCount();
    auto *name = child<QComboBox>("valueName")->lineEdit();
    name->setFocus();
    name->selectAll();
    QTest::keyClicks(name, "pull");
    Workbench::turn();
    QCOMPARE(value()->mName, std::string("pull"));
    QCOMPARE(FHistory::instance()->stepCount(), steps + 1); // one name, one step
    QVERIFY(plain->getValue().toString().find("\"pull\"") != std::string::npos);
    QVERIFY(twice->getValue().toString().find("\"force\"") != std::string::npos);
    QCOMPARE(table()->verticalHeaderItem(0)->text(), QStringLiteral("pull"));
    // A name that is taken gets a number, and the field shows it.
    rule("other", 0, 0, "", "First");
    name->selectAll();
    QTest::keyClicks(name, "pull");
    QVERIFY(value()->mName != "pull");
    QCOMPARE(Q(value()->mName), name->text());
}

void TestResultsEditor::averages()
{
    rule("mean", -1, 1, "", "Last");
    child<QComboBox>("valueType")->setCurrentIndex(1);
    auto *average = child<QCheckBox>("valueAverage");
    QTest::mouseClick(average, Qt::LeftButton);
    QCOMPARE(FHistory::instance()->undoText(), std::string("active average calculation"));
    QVERIFY(!child<FSpinBox>("valueLine")->isVisible() &&
            child<FSpinBox>("valueColumn")->isVisible());
    QCOMPARE(average->toolTip(), QStringLiteral("deactivate average calculation"));
    QLineEdit *rows = nullptr;
    for (auto *field : mEditor->findChildren<QLineEdit *>())
        if (field->parentWidget()->parentWidget() == average->parentWidget())
            rows = field;
    QVERIFY(rows);
    rows->setFocus();
    rows->selectAll();
    QTest::keyClicks(rows, "2");
    QTest::keyClick(rows, Qt::Key_Return);
    Workbench::turn();
    QCOMPARE(value()->averageRows(), 2U);
    QCOMPARE(FHistory::instance()->undoText(), std::string("change average rows"));
    QTRY_COMPARE(table()->item(0, 0)->text(), QStringLiteral("7")); // of 9 and 5
    QCOMPARE(mEditor->marks().cells.size(), 2);
    QCOMPARE(marked(mEditor->marks().cells[0]), QStringLiteral("5"));
    QCOMPARE(marked(mEditor->marks().cells[1]), QStringLiteral("9"));
    rows->selectAll();
    QTest::keyClicks(rows, "-3");
    QTest::keyClick(rows, Qt::Key_Return);
    QCOMPARE(value()->averageRows(), 2U);
    QTest::mouseClick(average, Qt::LeftButton);
    QCOMPARE(FHistory::instance()->undoText(), std::string("deactivate average calculation"));
    QCOMPARE(child<QComboBox>("valueType")->currentText(), QStringLiteral("FFileName"));
    QVERIFY(child<FSpinBox>("valueLine")->isVisible());
}

/// Random texts and rules: the marked cell is the one that is read, but where steps and reader are
/// known to part ways.
void TestResultsEditor::marksAgreeWithTheReader()
{
    static const char *const kWords[] = {"alpha", "Beta",  "1",   "2.5", "-3e2", "\t", "  ",
                                         ";",     "gamma", "x=7", "0",   "\n",   "\n", "beta"};
    std::mt19937 random(testSeed());
    int compared = 0, told = 0;
    for (int i = 0; i < 20000; ++i) {
        QString text;
        for (unsigned n = 5 + random() % 60; n > 0; --n)
            text += QLatin1String(kWords[random() % std::size(kWords)]) + ' ';
        text = text.trimmed();
        if (text.isEmpty())
            continue;
        FGenIntRule rule;
        rule.name = "v";
        rule.line = int(random() % 7) - 3;
        rule.column = int(random() % 4);
        static const char *const kAnchors[] = {"", "alpha", "Beta", "gamma", "x=", "nowhere"};
        rule.anchor = kAnchors[random() % std::size(kAnchors)];
        rule.first = random() % 2;
        FGenIntColumns columns;
        columns.numbers = random() % 3 > 0;
        columns.spacesAndTabs = true;
        columns.regExp = random() % 2 ? QString() : QStringLiteral(";");
        const auto shown = FGenIntText::fromString(text);
        QTextDocument document;
        document.setPlainText(text);
        const FGenIntMarks marks = FGenIntMarks::of(document, *shown, rule, columns);
        const auto readings = FGenIntReaderCore(*shown).read({rule}, columns);
        QCOMPARE(readings.size(), 1);
        const FGenIntReading &reading = readings.front();
        const bool hasAnchor = !rule.anchor.empty();
        if (hasAnchor && (!marks.hasAnchor || rule.line <= 0)) {
            ++told; // words beside the preview tell of these
            continue;
        }
        if (!hasAnchor && -rule.line > text.count('\n'))
            continue; // the reader never goes up to the first line
        const bool isRead = reading.columnFirst > 0 && !std::isnan(reading.value);
        if (!isRead)
            continue;
        const QTextBlock block = document.findBlockByNumber(int(reading.line) - 1);
        const FGenIntMarks::Span mark = marks.cells.value(0);
        const QString cell = text.mid(mark.begin, mark.length);
        QVERIFY2(mark.begin == block.position() + reading.columnFirst - 1 && cell == reading.cell,
                 qPrintable(QStringLiteral("%1\nline %2 column %3 anchor %4: '%5' read '%6'")
                                .arg(text)
                                .arg(rule.line)
                                .arg(rule.column)
                                .arg(QString::fromStdString(rule.anchor), cell, reading.cell)));
        ++compared;
    }
    QVERIFY2(compared > 1000 && told > 500, qPrintable(QString::number(compared)));
}

void TestResultsEditor::marksByTheSteps()
{
    const auto marksOf = [](const QString &text, int line, int column, const char *anchor,
                            bool first) {
        FGenIntRule rule;
        rule.line = line;
        rule.column = column;
        rule.anchor = anchor;
        rule.first = first;
        QTextDocument document;
        document.setPlainText(text);
        return FGenIntMarks::of(document, *FGenIntText::fromString(text), rule, FGenIntColumns());
    };
    const QString text = "head 1\nsum 2 sum 3\ntail 4\n \n\n";
    FGenIntMarks marks = marksOf(text, -1, 0, "", false); // trailing blank lines don't count
    QCOMPARE(text.mid(marks.cells[0].begin, 1), QStringLiteral("4"));
    marks = marksOf(text, 0, 0, "sum", true); // behind the last occurrence in the line
    QCOMPARE(text.mid(marks.cells[0].begin, 1), QStringLiteral("3"));
    QCOMPARE(marks.anchor.begin, text.indexOf("sum"));
    marks = marksOf(text, 90, 0, "sum", true);
    QVERIFY(marks.hasAnchor && marks.lines.isEmpty());
    marks = marksOf(text, 1, 0, "nowhere", true); // counts from the top
    QCOMPARE(text.mid(marks.cells[0].begin, 1), QStringLiteral("2"));
    QVERIFY(marksOf(text, 1, 0, "nowhere", false).lines.isEmpty());
}

void TestResultsEditor::ruleByClick()
{
    const auto *edit = mEditor->editor();
    const auto doubleClick = [&](const QString &text, bool byKey) {
        const QTextCursor at = edit->document()->find(text);
        const QPoint place = edit->cursorRect(at).center() - QPoint(3, 0);
        bool seen = false;
        QTimer::singleShot(100, mEditor, [&] {
            auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
            if (!menu)
                return;
            seen = menu->objectName() == "ruleMenu";
            if (byKey) {
                QTest::keyClick(menu, Qt::Key_Return);
            } else {
                for (QAction *action : menu->actions())
                    if (action->data().isValid()) {
                        QTest::mouseClick(menu, Qt::LeftButton, {},
                                          menu->actionGeometry(action).center());
                        break;
                    }
            }
            if (auto *left = QApplication::activePopupWidget())
                left->close();
        });
        QTest::mouseDClick(edit->viewport(), Qt::LeftButton, {}, place);
        QTest::qWait(150);
        return seen;
    };
    const size_t steps = FHistory::instance()->stepCount();
    QVERIFY(doubleClick("12.5", false));
    QVERIFY(value());
    QCOMPARE(FHistory::instance()->stepCount(), steps + 1);
    QCOMPARE(table()->item(0, 0)->text(), QStringLiteral("12.5"));
    QVERIFY(value()->mAnchor.find("total force") != std::string::npos);
    QVERIFY2(Q(value()->mName).startsWith("total_force"), value()->mName.c_str());
    QCOMPARE(marked(mEditor->marks().cells.value(0)), QStringLiteral("12.5"));
    QVERIFY(doubleClick("5", true));
    QCOMPARE(mFile->values().size(), size_t(2));
    Workbench::act("editUndo");
    Workbench::act("editUndo");
    QVERIFY(mFile->values().empty());
    QVERIFY(!doubleClick("total", false)); // no number
    QVERIFY(mFile->values().empty());
}

void TestResultsEditor::doubtIsSeen()
{
    rule("glued", 3, 0, "", "First");
    QCOMPARE(table()->item(0, 0)->text(), QStringLiteral("7"));
    QCOMPARE(table()->columnCount(), 4);
    const QString note = table()->item(0, 3)->text();
    QVERIFY2(note.contains("touches"), qPrintable(note));
    QVERIFY(child<QLabel>("doubt")->isVisible());
    bool isUnderlined = false;
    for (const auto &one : mEditor->editor()->extraSelections())
        isUnderlined =
            isUnderlined || (one.format.underlineStyle() == QTextCharFormat::WaveUnderline &&
                             one.cursor.selectedText() == "7");
    QVERIFY(isUnderlined);
    child<FSpinBox>("valueColumn")->setValue(1);
    QTRY_COMPARE(table()->item(0, 0)->text(), QStringLiteral("9"));
    QTRY_VERIFY(!child<QLabel>("doubt")->isVisible());
    QCOMPARE(table()->columnCount(), 3);
}

void TestResultsEditor::triedOnARun()
{
    rule("force", 0, 0, "force", "First");
    QString why;
    QVERIFY(FProject::instance()->save(mFolder.path() + "/tried.tbk", &why));
    const QString folder =
        Q(FPathManager::instance()->getResultsDirAbs(mBench->computation(), FDesign::baseline()));
    QVERIFY(QDir().mkpath(folder));
    QFile run(folder + "/out.dat");
    QVERIFY(run.open(QIODevice::WriteOnly));
    run.write("more\nlines\n total force = 99 N\n");
    run.close();
    mBench->connector()->gotoOverview();
    Workbench::turn();
    show();
    auto *source = child<QComboBox>("sampleSource");
    QCOMPARE(source->count(), 2);
    source->setCurrentIndex(1);
    Q_EMIT source->activated(1);
    Workbench::turn();
    QVERIFY(mEditor->editor()->toPlainText().startsWith("more"));
    QCOMPARE(table()->item(0, 0)->text(), QStringLiteral("99"));
    QCOMPARE(marked(mEditor->marks().cells.value(0)), QStringLiteral("99"));
    QVERIFY(mEditor->editor()->isReadOnly());
    source->setCurrentIndex(0);
    Q_EMIT source->activated(0);
    QCOMPARE(table()->item(0, 0)->text(), QStringLiteral("12.5"));
    QVERIFY(mFile->text().startsWith("a 1 2")); // nothing of the run is in the model
    // A rule that is proposed tells what it reads in the runs.
    QString offered;
    QTimer::singleShot(50, mEditor, [&] {
        auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        QVERIFY(menu);
        QTRY_VERIFY(menu->actions().value(2)->text().contains("run"));
        offered = menu->actions().value(2)->text();
        menu->close();
    });
    mEditor->readValueAt(mFile->text().indexOf("12.5"), QPoint(50, 50));
    QVERIFY2(offered.endsWith("1 run: 0 same, 1 other, 0 missing"), qPrintable(offered));
}

/// A worker reads what is long; what it gives is what the reader gives.
void TestResultsEditor::longSample()
{
    QString sample;
    for (int i = 0; sample.size() < (3 << 20); ++i)
        sample += QStringLiteral("step %1 residual %2\n").arg(i).arg(1.0 / (i + 1));
    sample += "final energy = -42.5\n";
    mFile->setContent(sample);
    Workbench::turn();
    rule("energy", 0, 0, "final energy", "Last");
    rule("step", 0, 0, "residual", "First");
    QTRY_VERIFY(!mEditor->isReading());
    QCOMPARE(table()->rowCount(), 2);
    QCOMPARE(table()->verticalHeaderItem(1)->text(), QStringLiteral("energy"));
    QCOMPARE(table()->item(1, 0)->text(), QStringLiteral("-42.5"));
    mEditor->selectValueViaHeader(1);
    QCOMPARE(marked(mEditor->marks().cells.value(0)), QStringLiteral("-42.5"));
    QVERIFY(mEditor->editor()->textCursor().blockNumber() > 1000);
}

/// An expression that would run for hours neither holds the window up nor marks anything; a sound
/// one marks what it read.
void TestResultsEditor::endlessExpression()
{
    mFile->setContent(QString(200, 'a') + " 5\n7;8\n");
    Workbench::turn();
    rule("v", 0, 1, "", "First");
    QTest::mouseClick(child<QRadioButton>("customSeparator"), Qt::LeftButton);
    auto *expression = child<QLineEdit>("regExpSeparator");
    const auto type = [&](const QString &text) {
        expression->setFocus();
        expression->selectAll();
        QTest::keyClicks(expression, text);
        QElapsedTimer time;
        time.start();
        QTest::keyClick(expression, Qt::Key_Return);
        return time.elapsed();
    };
    QVERIFY(type("(a*)*(a*)*(a*)*\\1\\2\\3b") < 1000);
    QCOMPARE(mEditor->marks().lines.size(), 1);
    QVERIFY(mEditor->marks().cells.isEmpty());
    QVERIFY(type("[;|]x?") < 1000);
    mFile->getCurrentValue().getPtr()->mLine = 1;
    child<FSpinBox>("valueLine")->setValue(0);
    child<FSpinBox>("valueLine")->setValue(1);
    QTRY_COMPARE_WITH_TIMEOUT(table()->item(0, 0)->text(), QStringLiteral("8"), 15000);
    QTRY_VERIFY(!mEditor->marks().cells.isEmpty());
    QCOMPARE(marked(mEditor->marks().cells[0]), QStringLiteral("8"));
}

QTEST_MAIN(TestResultsEditor)
#include "tst_resultseditor.moc"
