// SPDX-License-Identifier: Apache-2.0
// The workbench by the hands of a user: files dropped, items clicked, deleted, taken back.
#include "ffeatures.h"
#include "fmarloctrl.h"
#include "looks.h"
#include "workbench.h"

class TestWorkbench : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { Workbench::once(mFolder.path()); }
    void filesBecomeItems();
    void inputBecomesTemplate();
    void editorOfADefinition();
    void looksOfTheTabs();
    void limits();
    void namesOfEntries();
    void deletingTakesAlong();
    void foreignPayloads();
    void menusAndKeys();
    void connectorLives();
    void randomUseUndoneAndRedone();
    void pagesLeaveNothing();

private:
    QString write(const QString &name, const QByteArray &text)
    {
        const QString path = mFolder.path() + '/' + name;
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
            qFatal("can't write %s", qPrintable(path));
        return path;
    }
    static QString saved()
    {
        QString why;
        QTemporaryDir folder;
        const QString path = folder.path() + "/saved.tbk";
        if (!FProject::instance()->save(path, &why))
            return why;
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }
    QTemporaryDir mFolder;
};

void TestWorkbench::filesBecomeItems()
{
    const QString input = write("mesh file.msh", "mesh\n"), result = write("out.dat", "x 1\n");
    write("parts/a.txt", "a\n");
    write("parts/sub/b.txt", "b\n");
    Workbench bench;
    QVERIFY(bench.connector());
    QCOMPARE(bench.items<FSoftConComputationItem>().size(), size_t(1));
    QCOMPARE(bench.connector()->tabWidget()->count(), 1);

    QVERIFY(bench.dropFiles({input}, SoftConInput));
    const auto files = bench.items<FSoftConFileNameItem>();
    QCOMPARE(files.size(), size_t(1));
    QCOMPARE(files[0]->getToolTip(), QFileInfo(input).canonicalFilePath());
    const auto entry = files[0]->getItemObject().ptr<FEntry>();
    QCOMPARE(Q(entry->getFullName()), QStringLiteral("Exports|mesh_file.msh"));
    QVERIFY(FSelectionSet::instance()->contains(files[0]->getItemObject()));
    const auto value = entry->getValue().ptr<FInputFile>();
    QCOMPARE(Q(value->targetName()), QStringLiteral("mesh file.msh"));

    // A folder keeps its structure in the input folder of a run.
    QVERIFY(bench.dropFiles({mFolder.path() + "/parts"}, SoftConInput));
    QSet<QString> targets;
    for (const auto *item : bench.items<FSoftConFileNameItem>())
        targets << Q(
            item->getItemObject().ptr<FEntry>()->getValue().ptr<FInputFile>()->targetName());
    QCOMPARE(targets, QSet<QString>({"mesh file.msh", "parts/a.txt", "parts/sub/b.txt"}));

    QVERIFY(bench.dropFiles({result}, SoftConOutput));
    const auto outputs = bench.items<FSoftConOutputTemplateItem>();
    QCOMPARE(outputs.size(), size_t(1));
    QCOMPARE(outputs[0]->getToolTip(), QStringLiteral("out.dat"));
    QCOMPARE(bench.connector()->tabWidget()->count(), 2);
    QVERIFY(bench.dropFiles({result}, SoftConOutput)); // is part already: told, nothing made
    QCOMPARE(bench.items<FSoftConOutputTemplateItem>().size(), size_t(1));
    QVERIFY(bench.dropFiles({result}, SoftConImport));
    QCOMPARE(bench.items<FSoftConImportItem>().size(), size_t(1));
    QCOMPARE(bench.items<FSoftConImportItem>()[0]->getToolTip(), QStringLiteral("out.dat"));
    QVERIFY(!bench.dropFiles({result}, SoftConExport));
    QVERIFY(bench.items<FSoftConExportItem>().empty());

    // Each item in its quadrant, none over another.
    const auto all = bench.items<FSoftConObjectItem>();
    for (size_t i = 0; i < all.size(); ++i) {
        if (all[i]->getArea() != SoftConComputation)
            QCOMPARE(bench.scene()->getArea(all[i]->sceneBoundingRect().center()),
                     all[i]->getArea());
        for (size_t j = 0; j < i; ++j)
            QVERIFY(!all[i]->sceneBoundingRect().intersects(all[j]->sceneBoundingRect()));
    }
    // What was made is what is saved and read again.
    const QString text = saved();
    const QString path = write("again.tbk", text.toUtf8());
    QVERIFY(FProjectControl::instance()->isOpen());
    FHistory::instance()->markClean();
    QVERIFY(FProjectControl::instance()->open(path));
    bench.turn();
    QCOMPARE(bench.items<FSoftConObjectItem>().size(), all.size());
    QCOMPARE(saved(), text);
    QVERIFY(!FProjectControl::instance()->isModified());
}

/// A connector for each computation of the definition; a tab that has gone hears of nothing.
void TestWorkbench::editorOfADefinition()
{
    Workbench bench;
    FDispatcher::script("genericIntegrationDefinition shared();"
                        "genericIntegrationConfiguration k1() { .setDefinition(shared); }"
                        "genericIntegrationConfiguration k2() { .setDefinition(shared); }"
                        "genericIntegrationComputation one() { .setConfiguration(k1); }"
                        "genericIntegrationComputation two() { .setConfiguration(k2); }"
                        "genericIntegrationDefinition lonely();");
    Workbench::turn();
    for (const auto &own : getManageds<FSoftwareConnector>())
        if (own->getName() != bench.connector()->getName())
            FDispatcher::script(own->getName() + ".destroy();");
    Workbench::turn();
    const size_t before = getManageds<FSoftwareConnector>().size();
    FDispatcher::script("genericIntegrationEditor e(); e.setDefinition(lonely);");
    Workbench::turn();
    QCOMPARE(getManageds<FSoftwareConnector>().size(), before);
    FDispatcher::script("e.setDefinition(shared);");
    Workbench::turn();
    QCOMPARE(getManageds<FSoftwareConnector>().size(), before + 2);
    QVERIFY(FObjectManager::instance()->find("one_Connector"));
    QVERIFY(FObjectManager::instance()->find("two_Connector"));

    bench.connector()->addInputTemplateFromString("x = 1\n", "gone.inp");
    const auto file = bench.definition()->getFile("gone.inp");
    bench.connector()->gotoTab(FExpr<FGenIntFile>(file));
    Workbench::turn();
    QCOMPARE(bench.connector()->tabWidget()->count(), 2);
    bench.connector()->closeTab(1);
    Workbench::turn();
    file->setContent("x = 2\n");
    Workbench::turn();
    QCOMPARE(bench.connector()->tabWidget()->count(), 1);
}

/// Every tab of the examples, in a large window and in a small one.
void TestWorkbench::looksOfTheTabs()
{
    for (const char *example : {"beam", "filter", "chain"}) {
        Workbench bench(QStringLiteral(F_SOURCE_DIR "/examples/%1/%1.tbk").arg(example));
        for (const QSize &size : {QSize(1440, 900), QSize(1024, 720)}) {
            bench.window()->resize(size);
            QTabWidget *tabs = bench.connector()->tabWidget();
            for (int i = 0; i < tabs->count(); ++i) {
                tabs->setCurrentIndex(i);
                Workbench::turn();
                const QStringList faults = faultsOfLooks(bench.window());
                QVERIFY2(faults.isEmpty(), qPrintable(QStringLiteral("%1, %2, %3 wide\n%4")
                                                          .arg(example, tabs->tabText(i))
                                                          .arg(size.width())
                                                          .arg(faults.join('\n'))));
            }
        }
    }
}

void TestWorkbench::inputBecomesTemplate()
{
    const QString input = write("deck.inp", "*NODE\r\n1, 0.5\r\n");
    Workbench bench;
    bench.dropFiles({input}, SoftConInput);
    const size_t before = FHistory::instance()->stepCount();
    const auto *item = bench.items<FSoftConFileNameItem>().front();
    QTest::mouseDClick(bench.view()->viewport(), Qt::LeftButton, {}, bench.onScreen(item));
    bench.turn();
    QVERIFY(bench.items<FSoftConFileNameItem>().empty());
    const auto templates = bench.items<FSoftConInputTemplateItem>();
    QCOMPARE(templates.size(), size_t(1));
    const auto file = templates[0]->getItemObject().ptr<FGenIntFile>();
    QCOMPARE(file->getFileName(), QStringLiteral("deck.inp"));
    QCOMPARE(file->text(), QStringLiteral("*NODE\r\n1, 0.5\r\n"));
    QCOMPARE(bench.connector()->tabWidget()->currentIndex(), 1); // and its tab is open
    QVERIFY(!bench.definition()->getEntryOfScope("Exports|deck.inp"));
    QCOMPARE(FHistory::instance()->stepCount(), before + 1);
    QCOMPARE(Q(FHistory::instance()->undoText()), QStringLiteral("create input template"));
    Workbench::act("editUndo");
    QVERIFY(bench.items<FSoftConInputTemplateItem>().empty());
    QCOMPARE(bench.items<FSoftConFileNameItem>().size(), size_t(1));
    QCOMPARE(bench.connector()->tabWidget()->count(), 1);
    Workbench::act("editRedo");
    QCOMPARE(bench.items<FSoftConInputTemplateItem>().size(), size_t(1));
    // A click selects the configuration, whose entries the template uses.
    bench.connector()->gotoOverview();
    bench.turn();
    QTest::mouseClick(bench.view()->viewport(), Qt::LeftButton, {},
                      bench.onScreen(bench.items<FSoftConInputTemplateItem>()[0]));
    bench.turn();
    QVERIFY(FSelectionSet::instance()->contains(
        FExprBase(bench.computation()->getConfiguration().getPtr())));
}

void TestWorkbench::limits()
{
    Workbench bench;
    QStringList sixty;
    for (int i = 0; i < 60; ++i)
        sixty << write(QStringLiteral("many/f%1.txt").arg(i), "x");
    const unsigned long seen = FLogMsg::messages().size();
    QVERIFY(bench.dropFiles(QStringList(sixty) << write("many/one_more.txt", "x"), SoftConInput));
    QVERIFY(bench.items<FSoftConFileNameItem>().empty());
    QCOMPARE(FLogMsg::messages().size(), seen + 1);
    QCOMPARE(Q(FLogMsg::messages().back().message), QStringLiteral("61 items should be created."));
    QVERIFY(bench.dropFiles(sixty, SoftConInput));
    QCOMPARE(bench.items<FSoftConFileNameItem>().size(), size_t(60));

    QFile large(mFolder.path() + "/large.dat");
    QVERIFY(large.open(QIODevice::WriteOnly) && large.resize(31457281));
    QVERIFY(bench.dropFiles({large.fileName()}, SoftConOutput));
    QVERIFY(bench.items<FSoftConOutputTemplateItem>().empty());
    QVERIFY(Q(FLogMsg::messages().back().details).endsWith("has a size of 30MB."));
    QCOMPARE(Q(bench.scene()->checkFileSize(31457280, "x")), QString());
    QCOMPARE(Q(bench.scene()->checkFileSize(1073741824, QString())), QStringLiteral("1.02e+03MB"));
    QCOMPARE(Q(bench.scene()->checkFileSize(1073741825, QString())), QStringLiteral("1GB"));
}

/// An entry is called as its file, until the user calls it otherwise.
void TestWorkbench::namesOfEntries()
{
    Workbench bench;
    bench.dropFiles(
        {write("a b.txt", "1"), write("template.inp", "<entry>Exports|a_b.txt</entry>")},
        SoftConInput);
    const auto entry = bench.items<FSoftConFileNameItem>()[0]->getItemObject().ptr<FEntry>();
    const auto definition = entry->getEntryDefinition().getPtr();
    definition->setName("mine");
    bench.turn();
    bench.scene()->refreshEntryItems();
    bench.turn();
    QCOMPARE(Q(entry->getName()), QStringLiteral("mine"));
    Workbench::act("editUndo");
    Workbench::act("editRedo");
    QCOMPARE(Q(entry->getName()), QStringLiteral("mine"));
    entry->setValue(FExprBase(f_make_shared<FInputFile>(
        FExprBase(f_make_shared<FString>("other.txt")), FExprBase(f_make_shared<FString>("")))));
    bench.turn();
    QCOMPARE(Q(entry->getName()), QStringLiteral("other.txt"));
    Workbench::act("editUndo");
    Workbench::act("editUndo");
    QVERIFY(FHistory::instance()->canRedo()); // the item adds no step behind the user's back
}

void TestWorkbench::deletingTakesAlong()
{
    Workbench bench;
    bench.dropFiles({write("deck.inp", "a <entry>length</entry> b\n")}, SoftConInput);
    QTest::mouseDClick(bench.view()->viewport(), Qt::LeftButton, {},
                       bench.onScreen(bench.items<FSoftConFileNameItem>()[0]));
    bench.turn();
    bench.connector()->gotoOverview();
    FDispatcher::execute(
        FExprBase(bench.definition()), "addEntry",
        {FExprBase(f_make_shared<FString>("length")), FExprBase(f_make_shared<FDouble>(2.5))});
    bench.turn();
    const QString before = saved();
    auto *item = bench.items<FSoftConInputTemplateItem>()[0];
    QTest::mouseMove(bench.view()->viewport(), bench.onScreen(item));
    bench.turn();
    item->setFocus();
    QVERIFY(item->getDeleteButton()->isVisible());
    auto *button = qobject_cast<QToolButton *>(item->getDeleteButton()->widget());
    QCOMPARE(button->objectName(), QStringLiteral("deleteButton"));
    button->click();
    bench.turn();
    QVERIFY(bench.items<FSoftConInputTemplateItem>().empty());
    QVERIFY(!bench.definition()->getEntryOfScope("length")); // nobody else uses it
    QCOMPARE(bench.connector()->tabWidget()->count(), 1);
    Workbench::act("editUndo");
    QCOMPARE(saved(), before);
    QCOMPARE(bench.items<FSoftConInputTemplateItem>().size(), size_t(1));
    QCOMPARE(bench.connector()->tabWidget()->count(), 2);
}

/// A drag of objects names addresses: only what lives in this process is touched.
void TestWorkbench::foreignPayloads()
{
    Workbench bench;
    const QString type = FMarloCtrl::instance()->getFObjectMimeType();
    const auto payload = [&](const QVector<qint64> &addresses, qint64 process) {
        auto data = std::make_unique<QMimeData>();
        QByteArray bytes, token;
        QDataStream stream(&bytes, QIODevice::WriteOnly);
        for (const qint64 address : addresses)
            stream << address;
        data->setData(type, bytes);
        QDataStream own(&token, QIODevice::WriteOnly);
        own << process;
        data->setData(type + "-ids", token);
        return data;
    };
    const auto group = f_make_shared<FEntityGroup>("wing");
    group->registerObject();
    const auto address = qint64(reinterpret_cast<quintptr>(static_cast<FObject *>(group.get())));
    const qint64 self = QCoreApplication::applicationPid();
    const QPointF place = bench.placeIn(SoftConExport);
    QVERIFY(!bench.drop(payload({12345, address + 8}, self).get(), place));
    QVERIFY(!bench.drop(payload({address}, self + 1).get(), place));
    QVERIFY(bench.items<FSoftConExportItem>().empty());
    QVERIFY(bench.drop(payload({address}, self).get(), place));
    const auto exports = bench.items<FSoftConExportItem>();
    QCOMPARE(exports.size(), size_t(1));
    const auto entry = exports[0]->getItemObject().ptr<FEntry>();
    QCOMPARE(Q(entry->getName()), QStringLiteral("wing_export"));
    const auto second = f_make_shared<FEntityGroup>("tail");
    second->registerObject();
    const auto other = qint64(reinterpret_cast<quintptr>(static_cast<FObject *>(second.get())));
    bench.drop(payload({other}, self).get(), exports[0]->sceneBoundingRect().center());
    QCOMPARE(bench.items<FSoftConExportItem>().size(), size_t(1));
    QCOMPARE(entry->getValue().ptr<FGeometryExport>()->getGeometryObjects()->count(), 2U);
    Workbench::act("editUndo");
    QCOMPARE(entry->getValue().ptr<FGeometryExport>()->getGeometryObjects()->count(), 1U);
}

void TestWorkbench::menusAndKeys()
{
    Workbench bench;
    bench.dropFiles({write("deck.inp", "1\n")}, SoftConInput);
    const auto menuAt = [&](const QPointF &place) {
        QStringList texts;
        QTimer::singleShot(0, [&texts] {
            auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
            if (!menu)
                return;
            for (const QAction *action : menu->actions())
                texts << action->text();
            menu->close();
        });
        QGraphicsSceneContextMenuEvent event(QEvent::GraphicsSceneContextMenu);
        event.setScenePos(place);
        event.setScreenPos(
            bench.view()->viewport()->mapToGlobal(bench.view()->mapFromScene(place)));
        event.setWidget(bench.view()->viewport());
        QCoreApplication::sendEvent(bench.scene(), &event);
        return texts;
    };
    const auto *card = bench.items<FSoftConComputationItem>()[0];
    QCOMPARE(menuAt(card->sceneBoundingRect().center()),
             QStringList({"Run", "Read existing result files", "Show preview of input files",
                          "Export software connector to file"}));
    QCOMPARE(menuAt(bench.placeIn(SoftConImport)),
             QStringList({"Add Result Files", "", "Large", "Medium", "Small"}));
    const auto *item = bench.items<FSoftConFileNameItem>()[0];
    QCOMPARE(menuAt(item->sceneBoundingRect().center()).last(), QStringLiteral("Copy File Name"));

    bench.view()->setFocus();
    bench.turn();
    QTest::keyClick(bench.view(), Qt::Key_Up);
    QTest::keyClick(bench.view(), Qt::Key_Up);
    QVERIFY(bench.scene()->focusItem());
    QVERIFY(dynamic_cast<FSoftConFileNameItem *>(bench.scene()->focusItem()));
    QTest::keyClick(bench.view(), Qt::Key_Delete);
    bench.turn();
    QVERIFY(bench.items<FSoftConFileNameItem>().empty());
    bench.connector()->setItemSizeStr("Small");
    QCOMPARE(bench.scene()->getLayout()->getIconSizeStr(), QStringLiteral("Small"));
    QCOMPARE(FIni().value("SoftwareConnector/lastItemSize").toUInt(), 4U);
    bench.connector()->setItemSizeStr("nonsense");
    QCOMPARE(bench.connector()->getItemSizeStr(), QStringLiteral("Small"));
    bench.connector()->setItemSizeStr("Medium");
}

/// A page is closed by hiding it; a connector ends with its computation, and comes back with it.
void TestWorkbench::connectorLives()
{
    Workbench bench;
    QTabWidget *documents = bench.window()->documents();
    const int pages = documents->count();
    Q_EMIT documents->tabCloseRequested(documents->indexOf(bench.connector()->widget()));
    bench.turn();
    QCOMPARE(documents->count(), pages - 1);
    QVERIFY(bench.computation());
    bench.computation()->openSoftwareConnector();
    bench.turn();
    QCOMPARE(documents->count(), pages);
    const QString before = saved();
    FIO::instance()->answerNext(0);
    FSelectionSet::instance()->set({FExprBase(bench.computation())}, true);
    bench.turn();
    Workbench::act("editDelete");
    QVERIFY(!bench.computation());
    QCOMPARE(documents->count(), pages - 1);
    Workbench::act("editUndo");
    QVERIFY(bench.computation());
    QCOMPARE(documents->count(), pages);
    QCOMPARE(saved(), before);
    bench.computation()->setName("solver");
    bench.turn();
    QCOMPARE(documents->tabText(documents->indexOf(bench.connector()->widget())),
             QStringLiteral("solver"));
}

/// Undo to the start and redo to the end: the same project at each step, and the scene shows it.
void TestWorkbench::randomUseUndoneAndRedone()
{
    Workbench bench;
    QRandomGenerator random(20261123);
    std::map<size_t, QString> states;
    const auto note = [&] { states[FHistory::instance()->stepCount()] = saved(); };
    const auto shown = [&] {
        // Each object of the integration has one item, and nothing else has.
        size_t objects = 1;
        for (const auto &kind : {std::shared_ptr<FObject>(FGeometryExport::mpNull),
                                 std::shared_ptr<FObject>(FInputFile::mpNull),
                                 std::shared_ptr<FObject>(FResultsFileName::mpNull)})
            objects += bench.computation()->getConfiguration()->getEntry(kind, true).size();
        objects += bench.definition()->getFiles().size();
        return objects == bench.items<FSoftConObjectItem>().size();
    };
    bench.dropFiles({write("r.txt", "first 1\n")}, SoftConOutput); // a definition from now on
    const size_t least = FHistory::instance()->stepCount();
    note();
    for (int i = 0; i < 60; ++i) {
        switch (random.bounded(7)) {
        case 0:
            bench.dropFiles({write(QStringLiteral("f%1.msh").arg(random.bounded(9)), "x")},
                            SoftConInput);
            break;
        case 1:
            bench.dropFiles({write(QStringLiteral("r%1.dat").arg(random.bounded(9)), "y 2\n")},
                            SoftConOutput);
            break;
        case 2:
            bench.dropFiles({write(QStringLiteral("i%1.vtk").arg(random.bounded(9)), "z")},
                            SoftConImport);
            break;
        case 3:
            bench.scene()->addExport();
            break;
        case 4: {
            const auto files = bench.items<FSoftConFileNameItem>();
            if (!files.empty())
                QTest::mouseDClick(bench.view()->viewport(), Qt::LeftButton, {},
                                   bench.onScreen(files[0]));
            bench.connector()->gotoOverview();
            break;
        }
        default: {
            const auto all = bench.items<FSoftConObjectItem>();
            auto *one = all[size_t(random.bounded(int(all.size())))];
            if (one->getArea() != SoftConComputation)
                bench.scene()->deleteItem(one);
        }
        }
        bench.turn();
        note();
        QVERIFY2(shown(), qPrintable(QString::number(i)));
    }
    for (const bool forward : {false, true, false}) {
        while (forward
                   ? FHistory::instance()->redo()
                   : FHistory::instance()->stepCount() > least && FHistory::instance()->undo()) {
            bench.turn();
            const size_t at = FHistory::instance()->stepCount();
            if (states.count(at))
                QCOMPARE(saved(), states[at]);
            QVERIFY(shown());
        }
    }
}

void TestWorkbench::pagesLeaveNothing()
{
    const QString project = QStringLiteral(F_SOURCE_DIR "/examples/beam/beam.tbk");
    Workbench bench(project);
    const auto count = [&] {
        return std::pair(QApplication::allWidgets().size(),
                         FObjectManager::instance()->all().size());
    };
    const auto reopen = [&] {
        FProjectControl::instance()->close();
        bench.turn();
        FProjectControl::instance()->open(project);
        bench.turn();
    };
    reopen();
    const auto before = count();
    for (int i = 0; i < 20; ++i)
        reopen();
    QCOMPARE(count().first, before.first);
    QCOMPARE(count().second, before.second);
}

QTEST_MAIN(TestWorkbench)
#include "tst_workbench.moc"
