// SPDX-License-Identifier: Apache-2.0
// Whole journeys of a user with a real solver: from the welcome page to results and back.
#include "fchanges.h"
#include "fdesignsmodel.h"
#include "fdesignspage.h"
#include "fdispatcher.h"
#include "feditor.h"
#include "fgenintcommandfilebuttons.h"
#include "fgenintcommandfileedit.h"
#include "fgenintcommandfileeditor.h"
#include "fgenintresultsfileeditor.h"
#include "fgenintsetup.h"
#include "foutputpanel.h"
#include "fpreviewdialog.h"
#include "fproblemspanel.h"
#include "fresultfilepage.h"
#include "fruncontrol.h"
#include "workbench.h"

class TestJourneys : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void beamByMouse();
    void thirtyDesignsFromASpreadsheet();
    void ownProjectByClicks();
    void scanForResults();
    void chainByFile();
    void linkByDialog();
    void mistakesAreSeenBeforeTheRun();
    void stepsOfTheUserAsScript();

private:
    QString copyOf(const char *example)
    {
        const QString to = QStringLiteral("%1/%2%3").arg(mFolder.path(), example).arg(mCopies++);
        QDir().mkpath(to);
        const QString name = QStringLiteral("%1.tbk").arg(example);
        QFile::copy(QStringLiteral(F_SOURCE_DIR "/examples/%1/%2").arg(example, name),
                    to + '/' + name);
        return to + '/' + name;
    }
    static bool waitForRuns()
    {
        return QTest::qWaitFor([] { return FRunControl::instance()->isIdle(); }, 120000);
    }
    static int column(const QAbstractItemModel *model, const QString &title)
    {
        for (int i = 0; i < model->columnCount(); ++i)
            if (model->headerData(i, Qt::Horizontal).toString() == title)
                return i;
        return -1;
    }
    static QString cell(const QAbstractItemModel *model, int row, const QString &title)
    {
        return model->index(row, column(model, title)).data().toString();
    }
    QTemporaryDir mFolder;
    int mCopies = 0;
};

void TestJourneys::initTestCase()
{
    Workbench::once(mFolder.path());
    FRunControl::instance()->setJobs(2);
}

/// Open, run all, see the results, stand in the right line of a result file.
void TestJourneys::beamByMouse()
{
    Workbench bench(copyOf("beam"));
    const auto *card = bench.items<FSoftConComputationItem>().front();
    QCOMPARE(card->state().kind, FSoftConComputationItem::State::None);
    Workbench::act("runAll");
    QVERIFY(card->state().kind != FSoftConComputationItem::State::None); // it may have ended
    QVERIFY(waitForRuns());
    QTest::qWait(200);
    QCOMPARE(card->state().kind, FSoftConComputationItem::State::Finished);
    Workbench::act("viewDesigns");
    QTableView *table = bench.window()->designs()->table();
    const QAbstractItemModel *shown = table->model();
    QCOMPARE(shown->rowCount(), 4);
    QFile file(QStringLiteral(F_SOURCE_DIR "/examples/beam/expected.txt"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    int compared = 0;
    for (const QByteArray &line : file.readAll().split('\n')) {
        const QList<QByteArray> words = line.split(' ');
        if (words.size() != 4 || words[1].startsWith("hand"))
            continue;
        for (int row = 0; row < shown->rowCount(); ++row)
            if (cell(shown, row, QStringLiteral("Design")) == words[0]) {
                const double value = cell(shown, row, words[1]).toDouble();
                QVERIFY(qAbs(value / words[2].toDouble() - 1) < words[3].toDouble());
                ++compared;
            }
    }
    QCOMPARE(compared, 12);
    const QModelIndex deflection = shown->index(1, column(shown, QStringLiteral("deflection")));
    QTest::mouseDClick(table->viewport(), Qt::LeftButton, {},
                       table->visualRect(deflection).center());
    Q_EMIT table->doubleClicked(deflection);
    Workbench::turn();
    auto *page = qobject_cast<FResultFilePage *>(bench.window()->documents()->currentWidget());
    QVERIFY(page);
    QVERIFY(page->path().endsWith("/slim/beam/beam.dat"));
    const auto marks = page->editor()->extraSelections();
    QVERIFY(!marks.isEmpty());
    const QString read = marks.back().cursor.selectedText();
    QVERIFY2(qAbs(read.toDouble() - deflection.data().toDouble()) < 1e-7, qPrintable(read));

    // A change of a variable makes results stale, and undo makes them good again.
    FDispatcher::script("height.setValue(0.021);");
    Workbench::turn();
    QCOMPARE(card->state().kind, FSoftConComputationItem::State::Stale);
    Workbench::act("editUndo");
    // The preview shows what would be written for another design.
    Workbench::act("runPreview");
    auto *preview = bench.window()->findChild<QDialog *>("previewDialog");
    QVERIFY(preview);
    auto *design = preview->findChild<QComboBox *>("previewDesign");
    design->setCurrentText("slim");
    Q_EMIT design->activated(design->currentIndex());
    Workbench::turn();
    const auto *written = preview->findChild<FEditor *>("previewWritten");
    QVERIFY(written->toPlainText().contains("0.03") && !written->extraSelections().isEmpty());
    preview->close();
}

/// Thirty rows pasted, run on two cores, stopped, run on; one fails and its reason is read.
void TestJourneys::thirtyDesignsFromASpreadsheet()
{
    Workbench bench(copyOf("beam"));
    Workbench::act("viewDesigns");
    QTableView *table = bench.window()->designs()->table();
    QString rows;
    for (int i = 0; i < 30; ++i)
        rows += QStringLiteral("d%1\t%2\t0.01\t%3\n")
                    .arg(i)
                    .arg(i == 17 ? QStringLiteral("0") : QString::number(0.02 + 0.001 * i))
                    .arg(100 + i);
    QGuiApplication::clipboard()->setText(rows);
    const int before = table->model()->rowCount();
    const size_t steps = FHistory::instance()->stepCount();
    table->clearSelection();
    table->setCurrentIndex(QModelIndex());
    table->setFocus();
    QTest::keyClick(table, Qt::Key_V, Qt::ControlModifier);
    Workbench::turn();

    QCOMPARE(table->model()->rowCount(), before + 30);
    QCOMPARE(FHistory::instance()->stepCount(), steps + 1);
    QCOMPARE(cell(table->model(), before + 3, "height"), QStringLiteral("0.023"));
    // What is copied is what was pasted.
    table->selectionModel()->select(
        QItemSelection(table->model()->index(before, 0), table->model()->index(before + 29, 3)),
        QItemSelectionModel::ClearAndSelect);
    QTest::keyClick(table, Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(QGuiApplication::clipboard()->text().trimmed(), rows.trimmed());

    Workbench::act("runAll");
    QVERIFY(QTest::qWaitFor([] { return FRunControl::instance()->progress() > 0.3; }, 60000));
    Workbench::act("runStop");
    QVERIFY(waitForRuns());
    const auto finished = bench.window()->designs()->model()->finishedAndFailed().first;
    QVERIFY(finished > 0 && finished < 34);
    Workbench::act("runAll");
    QVERIFY(waitForRuns());
    Workbench::turn();
    const auto counts = bench.window()->designs()->model()->finishedAndFailed();
    QCOMPARE(counts.first, 33);
    QCOMPARE(counts.second, 1);
    for (int row = 0; row < table->model()->rowCount(); ++row) {
        const QModelIndex state =
            table->model()->index(row, column(table->model(), QStringLiteral("beam")));
        const bool isBad =
            cell(table->model(), row, QStringLiteral("Design")) == QLatin1String("d17");
        QCOMPARE(state.data().toString().startsWith("finished"), !isBad);
        if (isBad) {
            QVERIFY(!state.data(Qt::ToolTipRole).toString().isEmpty());
            Q_EMIT table->doubleClicked(state); // the output of that run
            Workbench::turn();
            const auto *text = bench.window()->output()->findChild<QPlainTextEdit *>("runOutput");
            QVERIFY(text && text->toPlainText().contains("ERROR"));
        }
    }
    // A change that doesn't touch its inputs runs nothing anew.
    Workbench::act("runFailed");
    QVERIFY(waitForRuns());
}

/// From an empty project to a column of results: a number becomes an entry by a click, a number of
/// the result a rule by a double click, and all of it goes back and comes again.
void TestJourneys::ownProjectByClicks()
{
    // The solver's input file as somebody has it, without tags.
    QString deck;
    {
        Workbench example(copyOf("beam"));
        deck = example.definition()->getFile("beam.inp")->text();
    }
    deck.replace("<entry>width</entry>", "0.01").replace("<entry>height</entry>", "0.02");
    deck.replace("<entry>load</entry>", "100");
    const QString input = mFolder.path() + "/own.inp";
    QFile file(input);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(deck.toUtf8());
    file.close();

    Workbench bench;
    QString why;
    QVERIFY2(FProject::instance()->save(mFolder.path() + "/own.tbk", &why), qPrintable(why));
    FHistory::instance()->markClean();
    QVERIFY(FProjectControl::instance()->open(mFolder.path() + "/own.tbk"));
    Workbench::turn();
    QVERIFY(bench.dropFiles({input}, SoftConInput));
    QTest::mouseDClick(bench.view()->viewport(), Qt::LeftButton, {},
                       bench.onScreen(bench.items<FSoftConFileNameItem>()[0]));
    Workbench::turn();
    bench.connector()->gotoTab(FExpr<FGenIntFile>(bench.definition()->getFile("own.inp")));
    Workbench::turn();
    auto *tab =
        qobject_cast<FGenIntCommandFileEditor *>(bench.connector()->tabWidget()->currentWidget());
    QVERIFY(tab);
    FGenIntCommandFileEdit *edit = tab->edit();
    const QTextCursor number = edit->document()->find("100", edit->document()->find("*CLOAD"));
    edit->goTo(number.blockNumber() + 1);
    Workbench::turn();
    QCursor::setPos(edit->viewport()->mapToGlobal(edit->cursorRect(number).center()));
    edit->viewport()->repaint();
    QVERIFY(edit->addButton()->isVisible());
    QTest::mouseClick(edit->addButton(), Qt::LeftButton);
    Workbench::turn();
    // It has no word before it; the name is given at the tag.
    QCursor::setPos(edit->viewport()->mapToGlobal(
        edit->cursorRect(edit->document()->find("newEntry")).center()));
    edit->viewport()->repaint();
    QTimer::singleShot(50, edit, [] {
        auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        QVERIFY(menu);
        QTest::mouseClick(menu, Qt::LeftButton, {},
                          menu->actionGeometry(menu->actions()[0]).center());
    });
    QTest::mouseClick(edit->editButton(), Qt::LeftButton);
    QTest::keyClicks(edit->nameField(), "load");
    QTest::keyClick(edit->nameField(), Qt::Key_Return);
    Workbench::turn();
    QVERIFY(bench.definition()->rootEntry("load"));

    FDispatcher::script("parameter pull(100);");
    const std::string name = bench.computation()->getName();
    FDispatcher::script(name + ".setApplication(\"ccx\");");
    FDispatcher::script(name + ".setArguments(\"-i own\");");
    FDispatcher::script(bench.computation()->getConfiguration().getPtr()->getName() +
                        ".setEntry(\"load\",pull);");
    FDispatcher::script("design strong(); strong.setValue(\"pull\",250);");
    Workbench::act("runAll");
    QVERIFY(waitForRuns());
    const QString result = mFolder.path() + "/own_designs/baseline/" + Q(name) + "/own.dat";
    QVERIFY2(QFile::exists(result), qPrintable(result));
    bench.connector()->gotoOverview();
    QVERIFY(bench.dropFiles({result}, SoftConOutput));
    bench.connector()->gotoTab(FExpr<FGenIntFile>(bench.definition()->getFile("own.dat")));
    Workbench::turn();
    auto *rules =
        qobject_cast<FGenIntResultsFileEditor *>(bench.connector()->tabWidget()->currentWidget());
    QVERIFY(rules);
    const QTextCursor force = rules->editor()->document()->find("-1.000000E+02");
    QVERIFY(!force.isNull());
    QTimer::singleShot(200, rules, [] {
        auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        QVERIFY(menu);
        QTest::keyClick(menu, Qt::Key_Return);
    });
    QTest::mouseDClick(rules->editor()->viewport(), Qt::LeftButton, {},
                       rules->editor()->cursorRect(force).center() - QPoint(20, 0));
    Workbench::turn();
    auto *table = rules->findChild<QTableWidget *>("resultsPreview");
    QCOMPARE(table->item(0, 0)->text(), QStringLiteral("-100"));
    QTest::mouseClick(qobject_cast<QToolButton *>(table->cellWidget(0, 2)), Qt::LeftButton);
    Workbench::turn();
    Workbench::act("viewDesigns");
    const QAbstractItemModel *designs = bench.window()->designs()->table()->model();
    const QString title = "eval_" + table->verticalHeaderItem(0)->text();
    QVERIFY2(column(designs, title) > 0, qPrintable(title));
    // The runs are older than the rule: the one that is shown is read again, the other runs anew.
    Workbench::act("runRead");
    QTRY_COMPARE(cell(designs, 0, title).toDouble(), -100.0);
    Workbench::act("runAll");
    QVERIFY(waitForRuns());
    QTRY_COMPARE(cell(designs, 1, title).toDouble(), -250.0);

    const QString text = FProject::instance()->text();
    while (FHistory::instance()->canUndo())
        Workbench::act("editUndo");
    QVERIFY(bench.items<FSoftConInputTemplateItem>().empty());
    while (FHistory::instance()->canRedo())
        Workbench::act("editRedo");
    QCOMPARE(FProject::instance()->text(), text);
}

/// What a run leaves becomes items: no text, nothing twice, nothing of a run without the button.
void TestJourneys::scanForResults()
{
    Workbench bench;
    QString why;
    QVERIFY2(FProject::instance()->save(mFolder.path() + "/scan.tbk", &why), qPrintable(why));
    FHistory::instance()->markClean();
    QVERIFY(FProjectControl::instance()->open(mFolder.path() + "/scan.tbk"));
    const std::string name = bench.computation()->getName();
    FDispatcher::script("parameter x(1);" + name + ".setApplication(\"sh\");" + name +
                        ".setArguments(\"-c 'mkdir -p sub; printf \\\\000 > a.bin; "
                        "printf \\\\000 > sub/b.res; echo text > c.txt; echo 1,2 > d.csv'\");");
    Workbench::turn();
    Workbench::act("runAll");
    QVERIFY(waitForRuns());
    QTest::qWait(50);
    QVERIFY(bench.items<FSoftConImportItem>().empty());
    QAbstractButton *scan = nullptr;
    for (QGraphicsItem *one : bench.scene()->items())
        if (auto *proxy = dynamic_cast<QGraphicsProxyWidget *>(one))
            if (proxy->widget() && proxy->widget()->accessibleName() == "Scan for results")
                scan = qobject_cast<QAbstractButton *>(proxy->widget());
    QVERIFY(scan && scan->isEnabled() && !scan->isChecked());
    scan->click(); // at once, for the run that has been
    Workbench::turn();
    QStringList found;
    for (const auto *item : bench.items<FSoftConImportItem>())
        found << Q(item->getItemObject()
                       .ptr<FEntry>()
                       ->getValue()
                       .getPtr()
                       ->castTo<FBasicType>()
                       ->toPlainString());
    found.sort();
    QCOMPARE(found, (QStringList{"a.bin", "d.csv", "sub/b.res"}));
    QCOMPARE(FHistory::instance()->undoText(), std::string("scan for results"));
    Workbench::act("editUndo");
    QVERIFY(bench.items<FSoftConImportItem>().empty());
    FDispatcher::script("x.setValue(2);" + name +
                        ".setArguments(\"-c 'printf \\\\000 > e.bin'\");");
    Workbench::act("runAll");
    QVERIFY(waitForRuns());
    QTRY_COMPARE(bench.items<FSoftConImportItem>().size(), size_t(1)); // of this run alone
    scan->click();
    scan->click();
    Workbench::turn();
    QCOMPARE(bench.items<FSoftConImportItem>().size(), size_t(1));
}

/// A chain goes to a file and comes by a drop on the window of another project, in one step.
void TestJourneys::chainByFile()
{
    const QString path = mFolder.path() + "/chain.ovdl";
    QString why;
    {
        Workbench bench(copyOf("chain"));
        QVERIFY2(FGenIntSetup::save(bench.computation(), true, path, &why), qPrintable(why));
        // Both at once aren't asked for; beside themselves they get free names.
        std::vector<FExprBase> both;
        for (const auto &one : getManageds<FGenIntComputation>())
            both.emplace_back(one.getPtr());
        FSelectionSet::instance()->set(both, true);
        Workbench::act("editCopy");
        QVERIFY(QGuiApplication::clipboard()->text().startsWith("<?xml"));
        Workbench::act("editPaste");
        QCOMPARE(getManageds<FSoftwareConnector>().size(), size_t(4));
    }
    {
        Workbench bench;
        const size_t before = getManageds<FSoftwareConnector>().size();
        const size_t steps = FHistory::instance()->stepCount();
        Workbench::act("editPaste");
        QCOMPARE(getManageds<FSoftwareConnector>().size(), before + 2);
        QCOMPARE(FHistory::instance()->stepCount(), steps + 1);
        Workbench::act("editUndo");
        QCOMPARE(getManageds<FSoftwareConnector>().size(), before);
        Workbench::act("editRedo");
        QCOMPARE(getManageds<FSoftwareConnector>().size(), before + 2);
    }
    Workbench bench;
    const size_t before = getManageds<FGenIntComputation>().size();
    const size_t steps = FHistory::instance()->stepCount();
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(path)});
    QDragEnterEvent enter(QPoint(300, 10), Qt::CopyAction, &data, Qt::LeftButton, {});
    QCoreApplication::sendEvent(bench.window(), &enter);
    QVERIFY(enter.isAccepted());
    QDropEvent drop(QPoint(300, 10), Qt::CopyAction, &data, Qt::LeftButton, {});
    QCoreApplication::sendEvent(bench.window(), &drop);
    Workbench::turn();
    QCOMPARE(getManageds<FGenIntComputation>().size(), before + 2);
    QCOMPARE(FHistory::instance()->stepCount(), steps + 1);
    for (const char *name : {"discharge", "block"}) {
        const auto connector = FSoftwareConnector::of(FObjectManager::instance()->find(name).get());
        QVERIFY(connector && connector->tabWidget());
        QVERIFY(connector->tabWidget()->count() >= 3);
    }
    QCOMPARE(getManageds<FSoftwareConnector>().size(), before + 2);
    Workbench::act("editUndo");
    QCOMPARE(getManageds<FGenIntComputation>().size(), before);
    QCOMPARE(getManageds<FSoftwareConnector>().size(), before);
    Workbench::act("editRedo");
    QCOMPARE(getManageds<FSoftwareConnector>().size(), before + 2);
    QVERIFY(FSoftwareConnector::of(FObjectManager::instance()->find("block").get()));
}

/// Chooses rows of the dialog by their texts, then the button; \p shown gets all rows.
static void answerLinkDialog(const QStringList &rows, const char *button, QStringList *shown)
{
    QTimer::singleShot(
        0, qApp,
        [=] {
            auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            auto *tree = dialog->findChild<QTreeWidget *>();
            for (QTreeWidgetItemIterator at(tree); *at; ++at) {
                *shown << (*at)->text(0);
                if (rows.contains((*at)->text(0))) {
                    tree->setCurrentItem(*at);
                    (*at)->setSelected(true);
                }
            }
            for (auto *one : dialog->findChildren<QPushButton *>())
                if (one->text() == QLatin1String(button)) {
                    if (!one->isEnabled())
                        *shown << "not enabled";
                    QTest::mouseClick(one, Qt::LeftButton);
                }
            if (dialog->isVisible())
                dialog->reject();
        });
}

/// A file that one connector leaves is taken by another, by the button of its overview; what would
/// be fed by itself is refused.
void TestJourneys::linkByDialog()
{
    Workbench bench(copyOf("chain"));
    const auto connectorOf = [](const char *name) {
        return FSoftwareConnector::of(FObjectManager::instance()->find(name).get());
    };
    for (const char *name : {"discharge", "block"})
        FDispatcher::execute(FExprBase(FObjectManager::instance()->find(name)),
                             "openSoftwareConnector");
    Workbench::turn();
    const QString before = FProject::instance()->text();
    const auto linkOf = [&](const char *name, const QStringList &rows, const char *button) {
        QStringList shown;
        answerLinkDialog(rows, button, &shown);
        connectorOf(name)->connectOtherConnector();
        Workbench::turn();
        return shown;
    };
    const size_t steps = FHistory::instance()->stepCount();
    QStringList shown = linkOf("block", {}, "Add");
    QCOMPARE(shown.last(), QStringLiteral("not enabled"));
    QVERIFY2(shown.contains("stdout.txt") && shown.first().endsWith("/discharge"),
             qPrintable(shown.join(' ')));
    QVERIFY(
        linkOf("block", {shown.first()}, "Add").contains("not enabled")); // only files are taken
    linkOf("block", {"stdout.txt"}, "Cancel");
    QCOMPARE(FProject::instance()->text(), before);
    linkOf("block", {"stdout.txt"}, "Add");
    QCOMPARE(FHistory::instance()->stepCount(), steps + 1);
    const QString linked = FProject::instance()->text();
    QVERIFY2(linked.contains(".setEntry(\"Exports|stdout.txt\",inputFile(discharge.getResults()."
                             "getResultTemplateName(\"stdout.txt\"),"),
             qPrintable(linked));
    // The other way round there would be no end.
    FIO::instance()->answerNext(0);
    shown = linkOf("discharge", {"block.dat"}, "Add");
    QVERIFY(shown.contains("block.dat"));
    QCOMPARE(FProject::instance()->text(), linked);
    Workbench::act("editUndo");
    QCOMPARE(FProject::instance()->text(), before);
    // A script gets the expression as text.
    answerLinkDialog({"block.dat"}, "Add", &shown);
    QCOMPARE(Q(FSoftwareConnector::chooseResultsFile().getPtr()->value()),
             QString("block.getResults().getResultTemplateName(\"block.dat\")"));
}

/// A typo in a tag, an anchor that isn't there, a program that isn't found.
void TestJourneys::mistakesAreSeenBeforeTheRun()
{
    Workbench bench(copyOf("beam"));
    FDispatcher::script("beam.setApplication(\"no_such_program\");");
    for (const auto &one : bench.definition()->getFiles())
        if (one->getFileName() == "beam.inp")
            one->setContent(
                QString(one->text()).replace("<entry>load</entry>", "<entry>laod</entry>"));
        else if (one->getFileName() == "beam.dat")
            one->setContent(QString(one->text()).replace("displacements", "desplicaments"));
    Workbench::turn();
    Workbench::act("runCheck");
    const auto *table = bench.window()->problems()->findChild<QAbstractItemView *>("problems");
    QStringList texts;
    for (int row = 0; row < table->model()->rowCount(); ++row) {
        QString line;
        for (int i = 0; i < table->model()->columnCount(); ++i)
            line += table->model()->index(row, i).data().toString() + ' ';
        texts << line;
    }
    const QString all = texts.join('\n');
    QVERIFY2(all.contains("no_such_program") && all.contains("laod") &&
                 all.contains("displacements"),
             qPrintable(all));
}

/// Each step of the user appears as the script line that does it, and does it again elsewhere.
void TestJourneys::stepsOfTheUserAsScript()
{
    QStringList lines;
    QString first;
    const auto saved = [] {
        QTemporaryDir folder;
        QString why;
        FProject::instance()->save(folder.path() + "/s.tbk", &why);
        QFile file(folder.path() + "/s.tbk");
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : why;
    };
    {
        Workbench bench;
        const auto link = connect(FChanges::instance(), &FChanges::executed, this,
                                  [&](const QString &line) { lines << line; });
        Workbench::act("insertParameter");
        Workbench::act("insertDesign");
        FDispatcher::execute(FExprBase(FObjectManager::instance()->find("parameter1")), "setName",
                             {FExprBase(f_make_shared<FString>("span"))});
        disconnect(link);
        first = saved();
    }
    QCOMPARE(lines.size(), 3);
    Workbench bench;
    for (const QString &line : lines)
        QVERIFY2(FDispatcher::script(S(line)).error.empty(), qPrintable(line));
    QCOMPARE(saved(), first);
}

QTEST_MAIN(TestJourneys)
#include "tst_journeys.moc"
