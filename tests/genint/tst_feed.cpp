// SPDX-License-Identifier: Apache-2.0
// A client that is fed by the change feed alone equals a fresh walk of the model after each turn.
#include "fchanges.h"
#include "fdefinitiongenint.h"
#include "fdesign.h"
#include "fdispatcher.h"
#include "fgenintcomputation.h"
#include "fgenintresultsfile.h"
#include "fgenintworkbench.h"
#include "fhistory.h"
#include "fmarloctrl.h"
#include "fselectionset.h"
#include "modeltest.h"
#include "statements.h"
#include "testseed.h"

#include <QtTest>
#include <map>

namespace {
/// All that a window could show of an object.
QString rowOf(const FManaged &object)
{
    QString text;
    QTextStream stream(&text);
    stream << object.getName() << " " << object.getClass() << " " << object.getDbId() << " "
           << quintptr(object.treeParent().get()) << " " << object.isUpToDate();
    for (const auto &child : object.getChildren<FManaged>())
        stream << " " << child->getDbId();
    object.saveScopeManner(stream, 0, false, false);
    stream.flush();
    return text;
}

struct Picture
{
    std::map<const FObject *, QString> rows;
    QStringList selection;
    std::string undo, redo;
    bool clean = true;
    QString design;
    size_t messages = 0;

    void readSelection()
    {
        selection.clear();
        for (const auto &object : FSelectionSet::instance()->getObjects())
            selection << QString::number(quintptr(object.getExpr().get()));
    }
    void readHistory()
    {
        undo = FHistory::instance()->undoTitle();
        redo = FHistory::instance()->redoTitle();
    }
    void readClean() { clean = FHistory::instance()->isClean(); }
    void readDesign() { design = Q(FDesign::current()->getName()); }
    void readRows()
    {
        rows.clear();
        for (const auto &object : FObjectManager::instance()->all())
            rows[object.get()] = rowOf(*object);
    }
    static Picture fresh()
    {
        Picture picture;
        picture.readRows();
        picture.readSelection();
        picture.readHistory();
        picture.readClean();
        picture.readDesign();
        picture.messages = FLogMsg::count();
        return picture;
    }
    QString difference(const Picture &other) const
    {
        for (const auto &row : rows) {
            const auto at = other.rows.find(row.first);
            if (at == other.rows.end())
                return "only in one: " + row.second;
            if (at->second != row.second)
                return row.second + "\nand\n" + at->second;
        }
        if (rows.size() != other.rows.size())
            return "other objects";
        if (selection != other.selection)
            return "selection " + selection.join(",") + " and " + other.selection.join(",");
        if (undo != other.undo || redo != other.redo || clean != other.clean)
            return "history " + Q(undo) + "|" + Q(redo) + " and " +
                   Q(other.undo + "|" + other.redo);
        return design != other.design || messages != other.messages ? "design or log" : "";
    }
};

/// Listens to the feed and to nothing else.
class Mirror : public QObject
{
public:
    Picture picture = Picture::fresh();
    int turns = 0;

    Mirror()
    {
        FChanges *feed = FChanges::instance();
        connect(feed, &FChanges::projectChanged, this, [this](unsigned events) {
            if (events & (FChanges::Opened | FChanges::Closed))
                picture.readRows();
            picture.readClean();
        });
        connect(
            feed, &FChanges::changed, this,
            [this](const QVector<FChange> &changes) {
                ++turns;
                for (const FChange &change : changes)
                    if (const auto managed = std::dynamic_pointer_cast<FManaged>(change.object))
                        take(*managed, change.what);
            });
        connect(
            feed, &FChanges::selectionChanged, this, [this] { picture.readSelection(); });
        connect(
            feed, &FChanges::historyChanged, this, [this] { picture.readHistory(); });
        connect(
            feed, &FChanges::designChanged, this, [this] { picture.readDesign(); });
        connect(feed, &FChanges::logChanged, this, [this] { picture.messages = FLogMsg::count(); });
    }

private:
    void take(const FManaged &object, unsigned what)
    {
        const bool known = picture.rows.count(&object) > 0;
        QVERIFY2(bool(what & (FChanges::Created | FChanges::Revived)) == !known,
                 qPrintable(Q(object.getName()) + (known ? " came twice" : " never came")));
        if (what & FChanges::Removed)
            picture.rows.erase(&object);
        else
            picture.rows[&object] = rowOf(object);
    }
};
} // namespace

class TestFeed : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { mModel.start(); }
    void mirrorEqualsTheModel_data();
    void mirrorEqualsTheModel();
    void tellsTheNetChangeOnce();
    void nothingIsLostWhenBlocked();
    void dispatcherLeavesNothingOfAFailure();
    void stepsJoinAndAreBounded();
    void cleanMarkFollowsUndo();
    void workbenchHearsOfUndoToo();

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
    Statements statements(seed);
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
                        FProject::instance()->clear();
                        FProject::instance()->load(mModel.path("p.tbk"));
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
                   "genericIntegrationCommandFile t() { .setFileName(\"t.txt\"); }");
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
    QCOMPARE(FHistory::instance()->undoTitle(), std::string("duplicate design: d1"));
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

void TestFeed::stepsJoinAndAreBounded()
{
    ModelTest::run("parameter a(0); genericIntegrationCommandFile t() { .setFileName(\"t\"); }");
    FHistory *history = FHistory::instance();
    const size_t steps = history->stepCount();
    const FExprBase a(ModelTest::object<FManaged>("a")), t(ModelTest::object<FManaged>("t"));
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

    const size_t limit = history->limit();
    history->setLimit(1 << 20);
    for (int i = 0; i < 40; ++i) {
        const std::string text(size_t(100000), char('a' + i % 26));
        FDispatcher::execute(t, "setContent", {FExprBase(f_make_shared<FString>(text))});
        if (i % 4 == 0) // shares the text: costs next to nothing
            FDispatcher::execute(t, "setForceWindowsLineEndings",
                                 {FExprBase(f_make_shared<FBool>(i % 8 == 0))});
    }
    QVERIFY(history->bytes() <= size_t(1 << 20));
    QVERIFY2(history->stepCount() >= 7 && history->stepCount() < 20,
             std::to_string(history->stepCount()).c_str());
    QVERIFY(!history->isClean());
    while (history->canUndo())
        history->undo();
    QVERIFY(!history->isClean()); // the clean state is out of reach
    QCOMPARE(ModelTest::log().filter("oldest steps").size(), 1);
    history->setLimit(limit);
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

void TestFeed::workbenchHearsOfUndoToo()
{
    struct Workbench : FGenIntWorkbench
    {
        QStringList heard;
        void refreshCommandFileEditors(const FDefinitionGenInt *d) override { note("texts", d); }
        void refreshResultsFileEditors(const FGenIntResultsFile *f) override { note("rules", f); }
        void definitionChanged(const FDefinitionGenInt *d) override { note("structure", d); }
        void setTitles(const FGenIntComputation *, const std::string &name) override
        {
            heard << "title " + Q(name);
        }
        void note(const char *what, const FManaged *object)
        {
            QVERIFY(!FHistory::instance()->isTransactionOpen());
            heard << what + (" " + Q(object->getName()));
        }
        QStringList turn()
        {
            QCoreApplication::processEvents();
            QStringList all = heard;
            heard.clear();
            all.sort();
            return all;
        }
    } workbench;
    ModelTest::run("genericIntegrationCommandFile t() { .setContent(\"<entry>a</entry>\"); }"
                   "genericIntegrationResultsFile r() {}"
                   "genericIntegrationDefinition d() { .addEntry(\"a\",1.0); .setFiles([t,r]); }"
                   "genericIntegrationConfiguration c() { .setDefinition(d); }"
                   "genericIntegrationComputation k() { .setConfiguration(c); }");
    QCoreApplication::processEvents();
    FGenIntWorkbench::setInstance(&workbench);
    const std::pair<const char *, QStringList> steps[] = {
        {"d.renameEntry(\"a\",\"b\");", {"structure d", "texts d"}},
        {"r.setFileName(\"out.txt\");", {"rules r"}},
        {"k.setName(\"run\");", {"title run"}},
        {"c.setEntry(\"b\",5);", {"structure d"}}};
    for (const auto &step : steps) {
        QCOMPARE(ModelTest::run(step.first), QStringList());
        QCOMPARE(workbench.turn(), step.second);
    }
    for (int i = 3; i >= 0; --i) {
        QVERIFY(FHistory::instance()->undo());
        const QStringList heard = workbench.turn();
        QCOMPARE(heard, i == 2 ? QStringList{"title k"} : steps[i].second);
    }
    FGenIntWorkbench::setInstance(nullptr);
    ModelTest::run("k.setName(\"other\");");
    QCOMPARE(workbench.turn(), QStringList());
}

QTEST_GUILESS_MAIN(TestFeed)
#include "tst_feed.moc"
