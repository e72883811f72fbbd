// SPDX-License-Identifier: Apache-2.0
// A client that is fed by the change feed alone equals a fresh walk of the model after each turn.
#include "fdispatcher.h"
#include "fmarloctrl.h"
#include "mirror.h"
#include "modeltest.h"
#include "statements.h"
#include "testseed.h"

class TestFeed : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { mModel.start(); }
    void mirrorEqualsTheModel_data();
    void mirrorEqualsTheModel();
    void tellsTheNetChangeOnce();
    void theFirstListenerHearsNothingOfBefore();
    void nothingIsLostWhenBlocked();
    void dispatcherLeavesNothingOfAFailure();
    void stepsJoin();
    void cleanMarkFollowsUndo();
    void openReplacesTheProject();
    void whatIsLeftOfAClosedProjectIsNobodys();

private:
    ModelTest mModel;
};

void TestFeed::mirrorEqualsTheModel_data()
{
    QTest::addColumn<unsigned>("seed");
    const unsigned first = testSeed();
    for (unsigned i = 0; i < 8; ++i)
        QTest::addRow("seed %u", first + i) << first + i;
}

void TestFeed::mirrorEqualsTheModel()
{
    QFETCH(unsigned, seed);
    Statements statements(seed, true);
    Mirror mirror;
    FHistory *history = FHistory::instance();
    for (int i = 0; i < 400; ++i) {
        QString what;
        for (int k = statements.below(3); k >= 0; --k) {
            const auto object = statements.object();
            switch (statements.below(20)) {
            case 0:
                what += history->undo() ? "undo " : "";
                break;
            case 1:
                what += history->redo() ? "redo " : "";
                break;
            case 2:
                if (object && object->isSaved())
                    FDispatcher::execute(FExprBase(object), "destroy");
                break;
            case 3:
                object->select();
                break;
            case 4:
                if (const auto design = std::dynamic_pointer_cast<FDesign>(object))
                    FDesign::setCurrent(design);
                break;
            case 5:
                if (statements.below(15) == 0) {
                    QString why;
                    QVERIFY2(FProject::instance()->save(mModel.path("p.tbk"), &why),
                             qPrintable(why));
                    if (statements.below(2)) {
                        FProject::instance()->open(mModel.path("p.tbk"));
                        what += "load ";
                    }
                }
                break;
            case 6:
                FLogMsg::info("Test", "message", "", nullptr);
                break;
            default:
                what += statements.one();
                FDispatcher::script(statements.one().toStdString());
            }
        }
        QCoreApplication::processEvents();
        const QString difference = mirror.picture.difference(Picture::fresh());
        QVERIFY2(difference.isEmpty(),
                 qPrintable(QString::number(i) + " after " + what + ":\n" + difference));
    }
    QVERIFY(mirror.turns > 100);
}

void TestFeed::tellsTheNetChangeOnce()
{
    ModelTest::run("parameter a(1); parameter b(a+1);");
    QCoreApplication::processEvents();
    QMap<QString, unsigned> told;
    QObject listener;
    connect(FChanges::instance(), &FChanges::changed, &listener,
            [&](const QVector<FChange> &changes) {
                QVERIFY(!FHistory::instance()->isTransactionOpen());
                for (const FChange &change : changes) {
                    const auto managed = std::dynamic_pointer_cast<FManaged>(change.object);
                    QVERIFY(managed && !told.contains(Q(managed->getName())));
                    told[Q(managed->getName())] = change.what;
                }
            });
    ModelTest::run("parameter gone(3); gone.destroy(); parameter c(3); c.setName(\"d\");"
                   "a.setValue(5); a.setValue(6);");
    QVERIFY(told.isEmpty()); // not before the turn ends
    QCoreApplication::processEvents();
    QCOMPARE(told.keys(), (QStringList{"a", "b", "d"}));
    QVERIFY(told["d"] & FChanges::Created);
    QVERIFY(told["a"] & FChanges::Changed);
    QCOMPARE(told["b"], unsigned(FChanges::State));
    told.clear();
    FHistory::instance()->undo();
    ModelTest::run("d.destroy(); undo();");
    QCoreApplication::processEvents();
    QCOMPARE(told.keys(), (QStringList{"a", "b", "d"}));
    QVERIFY(!(told["d"] & (FChanges::Created | FChanges::Removed | FChanges::Revived)));
}

void TestFeed::theFirstListenerHearsNothingOfBefore()
{
    int before = 0, told = 0;
    auto gone = std::make_unique<QObject>();
    connect(FChanges::instance(), &FChanges::changed, gone.get(), [&] { ++before; });
    ModelTest::run("parameter a(1);");
    gone.reset();
    QObject listener;
    connect(FChanges::instance(), &FChanges::changed, &listener,
            [&](const QVector<FChange> &changes) { told += changes.size(); });
    QCoreApplication::processEvents();
    QCOMPARE(before + told, 0);
    ModelTest::run("parameter b(1);");
    QCoreApplication::processEvents();
    QCOMPARE(told, 1);
}

void TestFeed::nothingIsLostWhenBlocked()
{
    ModelTest::run("parameter a(1); parameter b(a+1);");
    QCoreApplication::processEvents();
    const auto b = ModelTest::object<FManaged>("b");
    QVERIFY(b->isUpToDate());
    int told = 0;
    QObject listener;
    connect(FChanges::instance(), &FChanges::changed, &listener, [&] { ++told; });
    const auto holdsBack = [&](auto release) {
        ModelTest::run("a.setValue(" + QString::number(told + 7) + ");");
        QCoreApplication::processEvents();
        QCOMPARE(told, 0);
        release();
        QCoreApplication::processEvents();
        QCOMPARE(std::exchange(told, 0), 1);
        QVERIFY(b->isUpToDate());
    };
    FImmediateUpdateBlocker updates;
    holdsBack([&] { updates.unblock(); });
    FObjectTreeBlocker tree;
    holdsBack([&] { tree.unblock(); });
    FHistory::instance()->startTransaction("held");
    holdsBack([&] { FHistory::instance()->commit(true); });
    auto loading = std::make_unique<FLoadingScope>();
    holdsBack([&] { loading.reset(); });
}

void TestFeed::dispatcherLeavesNothingOfAFailure()
{
    ModelTest::run("parameter a(1); parameter b(a+1); design d() { .setValue(\"a\",2); }"
                   "design t();");
    const QString before = FProject::instance()->text();
    const size_t steps = FHistory::instance()->stepCount();
    QStringList lines;
    QObject listener;
    connect(
        FChanges::instance(), &FChanges::executed, &listener,
        [&](const QString &line) { lines << line; });
    const auto handle = [](const char *name) {
        return FExprBase(ModelTest::object<FManaged>(name));
    };
    const FExprBase number(f_make_shared<FDouble>(4.5));
    QVERIFY(!FDispatcher::execute({handle("a"), handle("b")}, "setValue", {handle("b")})
                 .error.empty()); // a cycle in either
    QVERIFY(!FDispatcher::execute({handle("a"), handle("t")}, "setValue", {number}).error.empty());
    QVERIFY(!FDispatcher::create("parametre", "x").error.empty());
    std::vector<FScriptError> errors;
    QVERIFY(!FDispatcher::script("parameter c(1);\nt.destroy();\nd.unsetValue(\"a\");\nd.paint();",
                                 &errors)
                 .error.empty());
    QCOMPARE(errors.size(), size_t(1));
    QCOMPARE(errors.front().line, size_t(4));
    QCOMPARE(FProject::instance()->text(), before);
    QCOMPARE(FHistory::instance()->stepCount(), steps);
    QCOMPARE(lines, QStringList());
    // What was touched and put back is recorded again.
    QVERIFY(FDispatcher::execute({handle("a"), handle("b")}, "setValue", {number}).error.empty());
    QVERIFY(FDispatcher::create("parameter", "c", {number}).error.empty());
    QVERIFY(FDispatcher::execute(handle("d"), "duplicate").error.empty());
    QCOMPARE(FHistory::instance()->stepCount(), steps + 3);
    QCOMPARE(FHistory::instance()->undoTitle(), QString("duplicate design: d1"));
    QCOMPARE(lines, (QStringList{"a.setValue(4.5); b.setValue(4.5);", "parameter c(4.5);",
                                 "d.duplicate();"}));
    const QString after = FProject::instance()->text();
    for (int i = 0; i < 3; ++i)
        QVERIFY(FDispatcher::call("undo").error.empty());
    QCOMPARE(FProject::instance()->text(), before);
    lines.removeAll("undo();");
    mModel.start(); // the lines do the same again
    ModelTest::run(before);
    for (const QString &line : lines)
        QCOMPARE(Q(FDispatcher::script(line.toStdString()).error.text()), QString());
    QCOMPARE(FProject::instance()->text(), after);
}

void TestFeed::stepsJoin()
{
    ModelTest::run("parameter a(0);");
    FHistory *history = FHistory::instance();
    const size_t steps = history->stepCount();
    const FExprBase a(ModelTest::object<FManaged>("a"));
    const auto set = [&](int value) {
        FDispatcher::execute(a, "setValue", {FExprBase(f_make_shared<FInteger>(value))}, "spin a");
    };
    for (int i = 1; i <= 5; ++i)
        set(i);
    QCOMPARE(history->stepCount(), steps + 1);
    history->endJoin();
    set(6);
    QCOMPARE(history->stepCount(), steps + 2);
    QVERIFY(history->undo() && history->undo());
    QCOMPARE(ModelTest::value("a"), QString("0"));
    QVERIFY(history->redo());
    QCOMPARE(ModelTest::value("a"), QString("5"));
}

void TestFeed::cleanMarkFollowsUndo()
{
    FHistory *history = FHistory::instance();
    ModelTest::run("parameter a(1);");
    QVERIFY(!history->isClean());
    QString why;
    QVERIFY(FProject::instance()->save(mModel.path("p.tbk"), &why) && history->isClean());
    ModelTest::run("a.setValue(2);");
    QVERIFY(!history->isClean());
    history->undo();
    QVERIFY(history->isClean());
    history->undo();
    ModelTest::run("parameter b(1);"); // the saved state can't be reached any more
    QVERIFY(!history->isClean());
    history->undo();
    QVERIFY(!history->isClean());
}

void TestFeed::openReplacesTheProject()
{
    ModelTest::write(mModel.path("q.tbk"), "parameter c(3);\n");
    ModelTest::write(mModel.path("half.tbk"), "parameter c(4);\nnonsense;\nparameter d(c);\n");
    ModelTest::write(mModel.path("bad.tbk"), "parameter c(5);\xff\n");
    ModelTest::run("parameter a(1); a.setValue(2); a.select();");
    QCoreApplication::processEvents();
    Mirror mirror;
    std::vector<unsigned> told;
    connect(FChanges::instance(), &FChanges::projectChanged, &mirror,
            [&](unsigned events) { told.push_back(events); });
    FProject *project = FProject::instance();
    const auto open = [&](const char *name) {
        const bool ok = project->open(mModel.path(name));
        QCoreApplication::processEvents();
        return ok;
    };
    const QString before = project->text(), path = project->path();
    for (const char *name : {"none.tbk", "bad.tbk"}) {
        QVERIFY(!open(name));
        QCOMPARE(project->text(), before);
        QCOMPARE(project->path(), path);
        QVERIFY(!FHistory::instance()->isClean() && FHistory::instance()->canUndo());
        QVERIFY(project->errors().empty() && told.empty());
        QVERIFY(FLogMsg::last().message.find(name) != std::string::npos);
    }
    QVERIFY(open("q.tbk"));
    QCOMPARE(project->text(), QString("parameter c(3) {}\n"));
    QCOMPARE(project->path(), mModel.path("q.tbk"));
    QVERIFY(FHistory::instance()->isClean() && !FHistory::instance()->canUndo());
    QCOMPARE(told.size(), size_t(1));
    QVERIFY((told[0] & FChanges::Opened) && (told[0] & FChanges::Closed));
    QCOMPARE(mirror.picture.difference(Picture::fresh()), QString());
    QVERIFY(!open("half.tbk")); // as far as it goes, and known not to be whole
    QCOMPARE(project->errors().size(), size_t(1));
    QCOMPARE(ModelTest::value("d"), QString("4"));
    QCOMPARE(told.size(), size_t(2));
    QCOMPARE(mirror.picture.difference(Picture::fresh()), QString());
}

/// A run that ends late, or a handle that somebody holds, tells of objects whose place in the
/// project another one has by now.
void TestFeed::whatIsLeftOfAClosedProjectIsNobodys()
{
    ModelTest::run("parameter a(1);");
    const auto old = std::dynamic_pointer_cast<FManaged>(FObjectManager::instance()->find("a"));
    FProject::instance()->clear();
    ModelTest::run("parameter b(2);");
    QCoreApplication::processEvents();
    Mirror mirror; // complains of what it was never told to be there
    FChanges::note(old.get(), FChanges::State);
    FManaged::destroy(old, true);
    FObjectManager::instance()->leave(old);
    QCoreApplication::processEvents();
    QCOMPARE(mirror.picture.difference(Picture::fresh()), QString());
    QVERIFY(FObjectManager::instance()->find("b"));
}

QTEST_GUILESS_MAIN(TestFeed)
#include "tst_feed.moc"
