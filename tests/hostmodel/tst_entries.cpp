// SPDX-License-Identifier: Apache-2.0
#include "fconfiguration.h"
#include "fhistory.h"
#include "modeltest.h"

#include <QtTest>

namespace {
/// Keeps what is told of renamed tags.
class FToldDefinition : public FDefinitionCustom
{
public:
    FToldDefinition()
        : FDefinitionCustom(nullptr, "d", nullptr)
    {
    }
    void updateCommandFiles(std::string oldName, std::string newName) override
    {
        told << Q(oldName + ">" + newName);
    }
    QStringList told;
};
} // namespace

class tst_Entries : public QObject
{
    Q_OBJECT
    ModelTest mModel;
    std::shared_ptr<FToldDefinition> mDefinition;
    std::shared_ptr<FConfigurationCustom> mConfiguration;

    std::shared_ptr<FEntryDef> entry(const char *path) const
    {
        return mDefinition->getEntryOfScope(path).ptr<FEntryDef>();
    }
    FStatus add(const char *path, const char *value = "1")
    {
        return mDefinition->addEntryCommand(path, FExprBase::resolve(value));
    }
    QStringList paths() const
    {
        QStringList paths;
        for (const auto &item : mDefinition->getNameMap())
            paths << Q(item.first);
        return paths;
    }
    QStringList undone()
    {
        FHistory::instance()->undo();
        return paths();
    }

private Q_SLOTS:
    void init()
    {
        mModel.start();
        mDefinition = f_make_shared<FToldDefinition>();
        mDefinition->registerObject();
        mConfiguration = f_make_shared<FConfigurationCustom>(nullptr, "c", nullptr);
        mConfiguration->registerObject();
        FHistory::instance()->clear();
    }
    void cleanup()
    {
        mDefinition.reset();
        mConfiguration.reset();
    }
    void names_data();
    void names();
    void correctedNamesAreTold();
    void groups();
    void lookup();
    void renames();
    void undoInGroups();
    void oneEntryPerDefinition();
    void savedValues();
    void manyEntries();
};

void tst_Entries::names_data()
{
    QTest::addColumn<QString>("wanted");
    QTest::addColumn<QString>("kept");
    QTest::newRow("plain") << "a_1.B"
                           << "a_1.B";
    QTest::newRow("blank") << "a b"
                           << "a_b";
    QTest::newRow("marks") << "<a>[0]|b\""
                           << "_a__0__b_";
    QTest::newRow("not ASCII") << "Höhe"
                               << "H_he";
    QTest::newRow("nothing") << ""
                             << "entry";
    QTest::newRow("taken") << "taken"
                           << "taken1";
    QTest::newRow("taken twice") << "two"
                                 << "two2";
    QTest::newRow("other case is free") << "Taken"
                                        << "Taken";
}

void tst_Entries::names()
{
    QFETCH(QString, wanted);
    for (const char *name : {"taken", "two", "two"})
        FEntryDef::create(name, mDefinition, 1, 1, false, true, "", FExprBase::resolve("1"));
    const auto made =
        FEntryDef::create(S(wanted), mDefinition, 1, 1, false, true, "", FExprBase::resolve("2"));
    QTEST(Q(made->getName()), "kept");
    const auto other =
        FEntryDef::create("other", mDefinition, 1, 1, false, true, "", FExprBase::resolve("3"));
    FEntryDef::create("x", mDefinition, 1, 1, false, true, "", FExprBase::resolve("3"));
    made->setName(S(wanted)); // its own name is free for itself
    QTEST(Q(made->getName()), "kept");
    made->setName("free");
    other->setName(S(wanted));
    QTEST(Q(other->getName()), "kept");
}

void tst_Entries::correctedNamesAreTold()
{
    ModelTest::log();
    QVERIFY(add("g|a") && mDefinition->renameEntryCommand("g|a", "b"));
    QCOMPARE(ModelTest::log(), QStringList());
    QVERIFY(add("H\u00f6he 1|a b"));
    QVERIFY(mDefinition->renameEntryCommand("g|b", "a b"));
    QCOMPARE(ModelTest::log(),
             QStringList({"Definition|entry \"H\u00f6he 1|a b\": the name is taken or not possible|"
                          "the entry is named H_he_1|a_b",
                          "Definition|entry \"a b\": the name is taken or not possible|"
                          "the entry is named a_b"}));
}

void tst_Entries::groups()
{
    QVERIFY(add("g|s|a") && add("g|b") && add("c"));
    QCOMPARE(paths(), QStringList({"c", "g", "g|b", "g|s", "g|s|a"}));
    QVERIFY(entry("g")->isGroup() && entry("g|s")->isGroup() && !entry("g|b")->isGroup());
    QCOMPARE(entry("g|s|a")->getFullName(), std::string("g|s|a"));
    QVERIFY(!entry("g")->getType());
    QCOMPARE(entry("c")->getType()->getClass(), std::string("FInteger"));
    const size_t steps = FHistory::instance()->stepCount();
    QCOMPARE(add("c|x").error.text(), std::string("entry c is a value, expected a group"));
    QCOMPARE(add("g|b").error.text(), std::string("entry g|b exists already"));
    QCOMPARE(add("g|s").error.text(), std::string("entry g|s exists already"));
    QVERIFY(!add("") && !add("|"));
    QVERIFY(!mDefinition->addEntryCommand("n", FExprBase()));
    QCOMPARE(paths().size(), 5);
    QCOMPARE(FHistory::instance()->stepCount(), steps);
    QVERIFY(FHistory::instance()->undo() && FHistory::instance()->undo());
    QCOMPARE(paths(), QStringList({"g", "g|s", "g|s|a"})); // a path is one step
    QVERIFY(FHistory::instance()->undo());
    QVERIFY(paths().isEmpty());
    QVERIFY(FHistory::instance()->redo());
    QCOMPARE(paths(), QStringList({"g", "g|s", "g|s|a"}));
}

void tst_Entries::lookup()
{
    QVERIFY(add("G|Len") && add("g|len") && add("LEN"));
    const auto found = [&](const char *name) { return Q(entry(name)->getFullName()); };
    QCOMPARE(found("g|len"), QString("g|len")); // exactly first
    QCOMPARE(found("G|Len"), QString("G|Len"));
    QVERIFY(entry("g|LEN") != nullptr); // else whatever the case
    QCOMPARE(found("len"), QString("LEN"));
    QVERIFY(!entry("g|le") && !entry("") && !entry("g|"));
}

void tst_Entries::renames()
{
    QVERIFY(add("g|s|a") && add("g|b") && add("h"));
    mDefinition->told.clear();
    entry("g")->setName("g");
    QVERIFY(mDefinition->told.isEmpty());
    entry("g")->setName("h"); // taken
    QCOMPARE(mDefinition->told, QStringList({"g>h1", "g|s>h1|s", "g|s|a>h1|s|a", "g|b>h1|b"}));
    QCOMPARE(paths(), QStringList({"h", "h1", "h1|b", "h1|s", "h1|s|a"}));
    QVERIFY(FHistory::instance()->undo());
    QCOMPARE(paths(), QStringList({"g", "g|b", "g|s", "g|s|a", "h"}));
    QCOMPARE(mDefinition->renameEntryCommand("none", "x").error.text(),
             std::string("no entry none in definition d"));
}

// The names by which entries are found follow undo in groups too.
void tst_Entries::undoInGroups()
{
    QVERIFY(add("g|a") && add("g|s|b", "2"));
    mConfiguration->setDefinition(FExpr<FDefinitionCustom>(mDefinition));
    mConfiguration->initEntireStructure(false);
    QVERIFY(mConfiguration->setEntryCommand("g|s|b", FExprBase::resolve("7")));
    const QStringList before = paths();
    const QString saved = FProject::instance()->text();
    const auto child = FEntryDef::create("c", entry("g|s"), mDefinition, FExprBase::resolve("3"));
    QVERIFY(bool(entry("g|s|c")));
    QCOMPARE(undone(), before);
    QVERIFY(FHistory::instance()->redo());
    QVERIFY(bool(entry("g|s|c")));
    QCOMPARE(undone(), before);
    entry("g|s")->setName("t");
    QVERIFY(bool(entry("g|t|b")));
    QCOMPARE(undone(), before);
    QCOMPARE(FProject::instance()->text(), saved);
    QCOMPARE(mConfiguration->getEntryMap().size(), size_t(4));
}

void tst_Entries::oneEntryPerDefinition()
{
    QVERIFY(add("g|a", "1.5"));
    mConfiguration->setDefinition(FExpr<FDefinitionCustom>(mDefinition));
    const auto g = mConfiguration->findEntry("g");
    const auto a = mConfiguration->findEntry("g|a");
    QVERIFY(g && a && g->isGroup());
    QCOMPARE(FEntry::create(entry("g|a"), mConfiguration, g), a);
    QCOMPARE(FEntry::create(entry("g"), mConfiguration, nullptr), g);
    mConfiguration->reinit(true);
    QCOMPARE(g->getChildren().size(), size_t(1));
    // The default is a start, no shared value.
    QVERIFY(a->getValue().getExpr() != entry("g|a")->getDefaultExpr().getExpr());
    QVERIFY(!g->setValue(FExprBase::resolve("1")));
    QVERIFY(mConfiguration->removeEntry(FExprBase(g)));
    QVERIFY(!mConfiguration->removeEntry(FExprBase(g)));
    QVERIFY(!mConfiguration->findEntry("g|a"));
    QVERIFY(FHistory::instance()->undo());
    QCOMPARE(mConfiguration->findEntry("g|a"), a);
}

void tst_Entries::savedValues()
{
    QVERIFY(add("t", "\"\"") && add("g|n", "2.5") && add("f", "inputFile(\"x\")"));
    QCOMPARE(ModelTest::run("parameter p(3);"), QStringList());
    mConfiguration->setDefinition(FExpr<FDefinitionCustom>(mDefinition));
    const auto text = f_make_shared<FString>("a \"b\"\\\nö\\\"");
    QVERIFY(mConfiguration->setEntryCommand("t", FExprBase(text)));
    QVERIFY(mConfiguration->setEntryCommand("g|n", FExprBase::resolve("p*2")));
    QString lines;
    QTextStream stream(&lines);
    mConfiguration->saveMembers(stream, 1);
    stream.flush();
    QVERIFY(lines.contains("    .setEntry(\"g|n\",p*2);\n"));
    QVERIFY(!lines.contains("\"g\","));
    const auto copy = f_make_shared<FConfigurationCustom>(nullptr, "copy", nullptr);
    copy->registerObject();
    copy->setDefinition(FExpr<FDefinitionCustom>(mDefinition));
    for (QString line : lines.split(";\n", Qt::SkipEmptyParts))
        QCOMPARE(ModelTest::run("copy" + line.trimmed() + ";"), QStringList());
    for (const char *name : {"t", "g|n", "f"})
        QCOMPARE(copy->findEntry(name)->getValue().toString(),
                 mConfiguration->findEntry(name)->getValue().toString());
    QCOMPARE(copy->findEntry("t")->getValue().toPlainString(), text->value());
    // A stale entry is not saved.
    mDefinition->findAndRemoveEntry(FExpr<FEntryBase>(mDefinition->getEntryOfScope("t")));
    lines.clear();
    mConfiguration->saveMembers(stream, 0);
    stream.flush();
    QVERIFY(!lines.contains("\"t\"") && lines.contains("\"g|n\""));
}

// Time per entry must not grow with their number.
void tst_Entries::manyEntries()
{
    mConfiguration->setDefinition(FExpr<FDefinitionCustom>(mDefinition));
    const auto seconds = [&](int count) {
        QString text = "<ovdl><definition>";
        for (int i = 0; i < count; ++i)
            text += QString("<entry name=\"e%1_%2\" default=\"1\"/>").arg(count).arg(i);
        QElapsedTimer timer;
        timer.start();
        mDefinition->setEntryDefsFromDB(S(text + "</definition></ovdl>"));
        mConfiguration->reinit(false);
        for (int i = 0; i < count; ++i)
            mConfiguration->setEntryCommand(S(QString("e%1_%2").arg(count).arg(i)),
                                            FExprBase(f_make_shared<FDouble>(i)));
        return double(timer.nsecsElapsed());
    };
    seconds(100);
    double ratio = 1e9;
    for (int i = 0; i < 3 && ratio > 12; ++i)
        ratio = seconds(4000 + i) / seconds(1000 + i);
    QVERIFY2(ratio <= 12, qPrintable(QString::number(ratio)));
}

QTEST_GUILESS_MAIN(tst_Entries)
#include "tst_entries.moc"
