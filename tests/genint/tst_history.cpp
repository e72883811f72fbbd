// SPDX-License-Identifier: Apache-2.0
// Undo and redo of whatever scripts can do: the saved bytes tell whether anything was lost, and a
// mirror that only the change feed tells must show it.
#include "fdefinitiongenint.h"
#include "fdispatcher.h"
#include "fgenintcommandfile.h"
#include "fgenintcomputation.h"
#include "fgenintresultsfile.h"
#include "fgenintworkbench.h"
#include "fhistory.h"
#include "fmarloctrl.h"
#include "mirror.h"
#include "modeltest.h"
#include "statements.h"
#include "testseed.h"

#include <QtTest>
#include <map>

namespace {
/// Whether the project is saved as expected; tells both texts if not.
bool savesAs(const QString &expected, const QString &after)
{
    const QString text = FProject::instance()->text();
    if (text == expected)
        return true;
    // Not as the message of a comparison: those are cut off.
    qWarning("%s: found\n%s\nexpected\n%s", qPrintable(after), qPrintable(text),
             qPrintable(expected));
    return false;
}

/// A template that is edited at random, and what it said behind each step.
class EditedTemplate
{
public:
    explicit EditedTemplate(unsigned seed)
        : mRandom(seed)
    {
        ModelTest::run("genericIntegrationCommandFile t() { .setFileName(\"t\"); }");
        mFile = ModelTest::object<FGenIntCommandFile>("t");
        mFile->setContent(letters(20000));
        mKnown.push_back(said());
    }
    int below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(mRandom); }

    void changeSomehow(bool mayJoin)
    {
        FHistory *history = FHistory::instance();
        const size_t before = history->stepCount();
        {
            const FHistoryTransaction step(nullptr, "change", true);
            if (mayJoin && below(3) == 0)
                history->setJoinKey("typing");
            change();
        }
        mKnown.resize(mAt + 1);
        if (mayJoin && history->stepCount() == before)
            mKnown.pop_back();
        mKnown.push_back(said());
        mAt = mKnown.size() - 1;
    }
    /// False at the end of the history and if the text isn't what it was.
    bool undo() { return FHistory::instance()->undo() && mKnown[--mAt] == said(); }
    bool redo() { return FHistory::instance()->redo() && mKnown[++mAt] == said(); }
    size_t at() const { return mAt; }
    size_t last() const { return mKnown.size() - 1; }

private:
    struct Said
    {
        QString text;
        bool isUtf8, isForced;
        bool operator==(const Said &o) const
        {
            return text == o.text && isUtf8 == o.isUtf8 && isForced == o.isForced;
        }
    };
    /// Without text(), which would leave the other form with the file.
    Said said() const
    {
        const auto utf8 = mFile->utf8();
        return {utf8 ? QString::fromStdString(*utf8) : mFile->text(), utf8 != nullptr,
                mFile->getForceWindowsLineEndings()};
    }
    QString letters(int count)
    {
        static const QString kSome = QString::fromUtf8("ab\n<\xc3\xa4\xf0\x9f\x98\x80");
        QString text(count, 'x');
        for (QChar &letter : text) // halves of pairs, too
            letter = kSome[below(kSome.size())];
        return text;
    }
    void change()
    {
        const int kind = below(12), least = int(FStateDelta::kLongText / sizeof(QChar));
        QString text = said().text;
        if (kind == 0)
            return mFile->setForceWindowsLineEndings(!mFile->getForceWindowsLineEndings());
        if (kind == 1) {
            const FExprBase utf8(f_make_shared<FString>(text.toStdString() + "end"));
            FDispatcher::execute(FExprBase(mFile), "setContent", {utf8});
            return;
        }
        if (kind == 2) // the same letters in another place, or all gone
            text = below(4) > 0 ? QString(text.constData(), text.size()) : QString();
        else if (kind == 3)
            text = (text + letters(least)).left(least - 2 + below(5));
        else if (kind == 4)
            text += letters(20000);
        else if (kind == 5)
            text.replace(letters(2), letters(below(4)));
        else {
            const int places[] = {0, text.size(), below(text.size() + 1)};
            const int place = places[below(3)], much = below(8) == 0 ? 15000 : 5;
            text.replace(qMax(0, place - below(2)), below(much), letters(below(much)));
        }
        mFile->setContent(text);
    }

    std::mt19937 mRandom;
    std::shared_ptr<FGenIntCommandFile> mFile;
    std::vector<Said> mKnown;
    size_t mAt = 0;
};
} // namespace

class TestHistory : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { mModel.start(); }
    void cleanup() { FHistory::instance()->setLimit(mLimit); }
    void everyStepCanBeUndoneAndRedone_data();
    void everyStepCanBeUndoneAndRedone();
    void listsComeBackWithTheirElements();
    void refusedStatementsLeaveNoStep();
    void workbenchHearsOfUndoToo();
    void oldestStepsGoBeyondTheLimit();
    void longTextsComeBackExactly_data() { everyStepCanBeUndoneAndRedone_data(); }
    void longTextsComeBackExactly();
    void editsOfALongTextKeepWhatDiffers();
    void changesInManyPlacesKeepWhatDiffers();
    void bytesAreWhatStepsKeep();

private:
    ModelTest mModel;
    const size_t mLimit = FHistory::instance()->limit();
};

void TestHistory::everyStepCanBeUndoneAndRedone_data()
{
    QTest::addColumn<unsigned>("seed");
    const unsigned first = testSeed();
    for (unsigned i = 0; i < 12; ++i)
        QTest::addRow("seed %u", first + i) << first + i;
}

void TestHistory::everyStepCanBeUndoneAndRedone()
{
    QFETCH(unsigned, seed);
    Statements statements(seed);
    Mirror mirror;
    const auto mirrored = [&] {
        QCoreApplication::processEvents();
        return mirror.picture.difference(Picture::fresh());
    };
    FHistory *history = FHistory::instance();
    // A block of members makes several steps; what is known of a step is the text behind it.
    std::map<size_t, std::pair<QString, QString>> known{
        {0, {"nothing", FProject::instance()->text()}}};
    for (int i = 0; i < 250; ++i) {
        QString statement;
        if (statements.below(12) == 0) {
            const auto victim = statements.object();
            if (!victim || !victim->isSaved())
                continue;
            statement = "destroy " + Q(victim->getName());
            FManaged::destroy(victim, true);
        } else {
            statement = statements.one();
            ModelTest::run(statement);
        }
        const QString text = FProject::instance()->text();
        const auto before = std::prev(known.end());
        QVERIFY2(history->stepCount() > before->first || text == before->second.second,
                 qPrintable("no step for " + statement));
        known[history->stepCount()] = {statement, text};
        if (i % 3 == 0)
            QCOMPARE(mirrored(), QString());
    }
    const size_t all = history->stepCount();
    QVERIFY(known.size() > 40);
    const auto agrees = [&](const QString &way) {
        const auto at = known.find(history->stepCount());
        return at == known.end() || savesAs(at->second.second, way + at->second.first);
    };
    for (int round = 0; round < 2; ++round) {
        while (history->canUndo())
            QVERIFY(history->undo() && agrees("undo to "));
        QCOMPARE(mirrored(), QString());
        while (history->canRedo())
            QVERIFY(history->redo() && agrees("redo to "));
        QCOMPARE(mirrored(), QString());
        QCOMPARE(history->stepCount(), all);
    }
    // What is saved loads to the same bytes.
    const QString last = known[all].second;
    FProject::instance()->clear();
    {
        const FLoadingScope loading;
        const QString errors = ModelTest::run(last).join("; ");
        QVERIFY2(errors.isEmpty(), qPrintable(errors + "\n" + last));
    }
    QVERIFY(savesAs(last, "loading it again"));
}

void TestHistory::listsComeBackWithTheirElements()
{
    QCOMPARE(ModelTest::run("genericIntegrationCommandFile t() { .setFileName(\"t.txt\"); }"
                            "genericIntegrationResultsFile r() { .setFileName(\"r.txt\"); }"
                            "genericIntegrationDefinition d() { .setFiles([t,r]); }"
                            "genericIntegrationConfiguration c() { .setDefinition(d); }"
                            "genericIntegrationComputation k() { .setConfiguration(c); }"),
             QStringList());
    const QString text = FProject::instance()->text();
    for (const char *name : {"t", "r", "d", "c", "k"}) {
        FManaged::destroy(ModelTest::object<FManaged>(name), true);
        const QString without = FProject::instance()->text();
        QVERIFY2(without != text, name);
        QVERIFY(FHistory::instance()->undo());
        QVERIFY2(FProject::instance()->text() == text, name);
        QVERIFY(FHistory::instance()->redo());
        QVERIFY2(FProject::instance()->text() == without, name);
        QVERIFY(FHistory::instance()->undo());
    }
    // A change of the list between removal and undo must not stand in the way.
    FManaged::destroy(ModelTest::object<FManaged>("t"), true);
    QCOMPARE(ModelTest::run("d.setFiles([r]);"), QStringList());
    QVERIFY(FHistory::instance()->undo() && FHistory::instance()->undo());
    QCOMPARE(FProject::instance()->text(), text);
}

void TestHistory::refusedStatementsLeaveNoStep()
{
    QCOMPARE(ModelTest::run("parameter a(1); parameter b(a+1); design v();"), QStringList());
    const size_t before = FHistory::instance()->stepCount();
    for (const char *statement :
         {"a.setValue(b);", "a.paint(3);", "nothing.setValue(1);", "parameter (3);", "c.setValue(",
          "v.setValue(\"none\",1);", "parameter c(none+1);"})
        QVERIFY2(!ModelTest::run(statement).isEmpty(), statement);
    QCOMPARE(FHistory::instance()->stepCount(), before);
}

void TestHistory::workbenchHearsOfUndoToo()
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

void TestHistory::oldestStepsGoBeyondTheLimit()
{
    ModelTest::run("genericIntegrationCommandFile t() { .setFileName(\"t\"); }");
    FHistory *history = FHistory::instance();
    const FExprBase t(ModelTest::object<FManaged>("t"));
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
}

void TestHistory::longTextsComeBackExactly()
{
    QFETCH(unsigned, seed);
    FHistory *history = FHistory::instance();
    const bool isLimited = seed % 3 == 0;
    EditedTemplate text(seed);
    const size_t first = history->stepCount();
    if (isLimited)
        history->setLimit(500000);
    for (int i = 0; i < 200; ++i) {
        text.changeSomehow(!isLimited);
        QVERIFY(history->bytes() <= history->limit() || history->stepCount() == 1);
        while (text.at() > 0 && history->stepCount() > first && text.below(4) == 0)
            QVERIFY2(text.undo(), std::to_string(i).c_str());
        while (text.at() < text.last() && text.below(2) == 0)
            QVERIFY2(text.redo(), std::to_string(i).c_str());
    }
    while (text.at() < text.last())
        QVERIFY(text.redo());
    QVERIFY(!history->canRedo());
    const size_t bytes = history->bytes(), start = isLimited ? 0 : first;
    QCOMPARE(history->stepCount() < text.last(), isLimited);
    for (int round = 0; round < 2; ++round) {
        while (history->stepCount() > start)
            QVERIFY2(text.undo(), std::to_string(text.at()).c_str());
        QCOMPARE(text.at() == 0, !isLimited);
        while (history->canRedo())
            QVERIFY2(text.redo(), std::to_string(text.at()).c_str());
        QCOMPARE(history->bytes(), bytes);
    }
}

void TestHistory::editsOfALongTextKeepWhatDiffers()
{
    ModelTest::run("genericIntegrationCommandFile t() { .setFileName(\"t\"); }");
    const auto file = ModelTest::object<FGenIntCommandFile>("t");
    FHistory *history = FHistory::instance();
    const QString first(2000000, 'x');
    file->setContent(QString(first.constData(), first.size()));
    const size_t bytes = history->bytes(), steps = history->stepCount();
    for (int i = 0; i < 1000; ++i) {
        const QString before = file->text();
        file->setContent(QString(before).insert(i * 1999, "edit"));
        QVERIFY(before.isDetached()); // no step has it
        if (i % 100 == 0)             // nor does one that changed something else
            file->setForceWindowsLineEndings(i % 200 == 0);
        if (i == 499)
            history->markClean();
        QCOMPARE(history->isClean(), i == 499);
    }
    QCOMPARE(history->stepCount(), steps + 1010);
    QVERIFY2(history->bytes() - bytes < 2000000, std::to_string(history->bytes() - bytes).c_str());
    const QString last = file->text();
    for (size_t step = steps + 1010; step > steps; --step) {
        QCOMPARE(history->isClean(), step == steps + 505);
        QVERIFY(history->undo());
    }
    QVERIFY(file->text() == first);
    QVERIFY2(history->bytes() - bytes < 2000000, std::to_string(history->bytes() - bytes).c_str());
    while (history->canRedo()) {
        QVERIFY(history->redo());
        QCOMPARE(history->isClean(), history->stepCount() == steps + 505);
    }
    QVERIFY(file->text() == last);
}

void TestHistory::changesInManyPlacesKeepWhatDiffers()
{
    ModelTest::run("genericIntegrationCommandFile t() { .setFileName(\"t\"); }");
    const auto file = ModelTest::object<FGenIntCommandFile>("t");
    FHistory *history = FHistory::instance();
    QString first;
    for (int i = 0; i < 20000; ++i)
        first +=
            QString::number(i * 7919) + (i % 100 ? " 0.0 0.0 0.0\n" : " <entry>load</entry>\n");
    file->setContent(first);
    const size_t bytes = history->bytes();
    for (const char *name : {"a", "a longer name", "b", ""}) {
        const QString before = file->text();
        file->setContent(QString(first).replace("load", name));
        QVERIFY(before != file->text());
    }
    QVERIFY2(history->bytes() - bytes < 80000, std::to_string(history->bytes() - bytes).c_str());
    for (const char *name : {"b", "a longer name", "a", "load"}) {
        QVERIFY(history->undo());
        QVERIFY2(file->text() == QString(first).replace("load", name), name);
    }
    while (history->canRedo())
        QVERIFY(history->redo());
    QVERIFY(file->text() == QString(first).remove("load"));
}

void TestHistory::bytesAreWhatStepsKeep()
{
    ModelTest::run("genericIntegrationCommandFile t() { .setFileName(\"t\"); }");
    const auto file = ModelTest::object<FGenIntCommandFile>("t");
    FHistory *history = FHistory::instance();
    FDispatcher::execute(FExprBase(file), "setContent",
                         {FExprBase(f_make_shared<FString>(std::string(1000000, 'x')))});
    QVERIFY(history->bytes() < 100000);
    FManaged::destroy(file, true);
    QVERIFY(history->bytes() > 1000000);
    QVERIFY(history->undo());
    QVERIFY(history->bytes() < 100000);
    QVERIFY(history->undo());
    QVERIFY(history->bytes() > 1000000);
    // Short texts are shared, not counted with each step that leaves them.
    file->setContent(QString(4000, 'x'));
    const size_t bytes = history->bytes();
    for (int i = 0; i < 100; ++i)
        file->setForceWindowsLineEndings(i % 2 == 0);
    QVERIFY2(history->bytes() - bytes < 200000, std::to_string(history->bytes() - bytes).c_str());
}

QTEST_GUILESS_MAIN(TestHistory)
#include "tst_history.moc"
