// SPDX-License-Identifier: Apache-2.0
#include "fdesign.h"
#include "fgenintcomputation.h"
#include "flogmsg.h"
#include "fobjectmanager.h"
#include "fproject.h"
#include "frunnerlink.h"
#include "frunqueue.h"
#include "frunsync.h"
#include "fstudy.h"
#include "study.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>
#include <algorithm>
#include <cmath>
#include <csignal>
#include <sys/stat.h>
#include <sys/wait.h>

namespace {
/// Counts the starts and ends that a computation tells of.
struct Watch
{
    explicit Watch(const std::shared_ptr<FExternComputation> &computation)
        : started(signaller(computation), &FGenIntCompSignalRapper::genIntRunStarted)
        , ended(signaller(computation), &FGenIntCompSignalRapper::genIntRunEnded)
    {
    }
    static FGenIntCompSignalRapper *
    signaller(const std::shared_ptr<FExternComputation> &computation)
    {
        return std::dynamic_pointer_cast<FGenIntComputation>(computation)->getSignalRapper();
    }
    QSignalSpy started, ended;
};
} // namespace

class TestRunQueue : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { FObject::initPrototypes(); }
    void init() { qputenv("TURNBUCKLE_RUNNER", F_BIN_DIR "/turnbuckle-runner"); }

    void runsTheChainOfEachDesign_data()
    {
        QTest::addColumn<int>("jobs");
        QTest::newRow("1") << 1;
        QTest::newRow("3") << 3;
        QTest::newRow("more than designs") << 9;
    }

    void runsTheChainOfEachDesign()
    {
        QFETCH(int, jobs);
        Study study;
        FRunQueue queue;
        size_t most = 0;
        int heard = 0;
        queue.setListener([&](const FRunRecord &record) {
            most = std::max(most, queue.running());
            QCOMPARE(FDesign::current()->getName(), record.design);
            ++heard;
        });
        QStringList lines = study.run(&queue, jobs);
        QCOMPARE(heard, 8);
        QCOMPARE(queue.failed(), size_t(0));
        QVERIFY(most <= size_t(jobs)); // programs; the values of one more may be read
        for (const char *design : {"d1", "d2", "d3", "d4"})
            QVERIFY(lines.indexOf(QString(design) + " first: finished") <
                    lines.indexOf(QString(design) + " second: finished"));
        if (jobs > 1)
            lines.sort();
        QCOMPARE(lines,
                 QStringList({"d1 first: finished", "d1 second: finished", "d2 first: finished",
                              "d2 second: finished", "d3 first: finished", "d3 second: finished",
                              "d4 first: finished", "d4 second: finished"}));
        // The second took the number of the first, in each design its own.
        for (int i = 0; i < 4; ++i) {
            QCOMPARE(study.value("z", study.designs[size_t(i)]), i + 2.0);
            const auto name = study.designs[size_t(i)]->getName();
            QCOMPARE(contentOf(study.runPath(name.c_str(), "second/in.txt")),
                     QByteArray::number(i + 2) + "\n");
        }
    }

    void keepsValuesForLaterSessions()
    {
        Study study;
        const auto first = study.chain[0], second = study.chain[1];
        const auto d1 = study.designs[0];
        QCOMPARE(FStudy::cell(first, d1).state, FStudy::NotRun);
        // What is asked for comes behind what it needs, as long as that is out of date.
        QCOMPARE(FStudy::chain({second}, d1), study.chain);
        FRunQueue queue;
        study.run(&queue, 1, 1);
        QCOMPARE(FStudy::chain({second}, d1), Chain{second});
        QCOMPARE(FStudy::chain({second, first}, d1), study.chain);
        QCOMPARE(FStudy::cell(first, d1).state, FStudy::UpToDate);
        QVERIFY(d1->setValue("x", FExprBase::resolve("5")));
        QCOMPARE(FStudy::cell(first, d1).state, FStudy::Stale);

        // The next session has the values, and never as what is up to date.
        FProject::instance()->clear();
        QVERIFY(FProject::instance()->load(study.path("study.tbk")));
        const auto cell = [] {
            const auto object = [](const char *name) {
                return FObjectManager::instance()->find(name);
            };
            return FStudy::cell(std::dynamic_pointer_cast<FExternComputation>(object("first")),
                                std::dynamic_pointer_cast<FDesign>(object("d1")));
        };
        FStudy::Cell saved = cell();
        QCOMPARE(saved.state, FStudy::Earlier);
        QCOMPARE(saved.tables.size(), size_t(1));
        const FTableRow row = saved.tables[0].rows.at(0);
        QVERIFY(row.name == "sum" && row.value == 1.0 && row.place.line == 1);

        const QString path = study.runPath("d1", "first/.turnbuckle/values.json");
        const auto write = [&](const QByteArray &text) {
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
        };
        write(R"({"tables":[{"rows":[{"name":"a","value":"3"},{"text":"-inf"},7]},8]})");
        saved = cell();
        QCOMPARE(saved.tables.size(), size_t(1));
        QVERIFY(saved.tables[0].rows.size() == 2 && std::isnan(saved.tables[0].rows[0].value));
        QCOMPARE(saved.tables[0].rows[1].value, -HUGE_VAL);
        for (const char *text : {"{\n\"tables\": [}", "", "[]", "{\"format\":2,\"tables\":[]}"}) {
            write(text);
            const size_t before = FLogMsg::count();
            saved = cell();
            QVERIFY(saved.state == FStudy::Earlier && saved.tables.empty());
            QVERIFY2(FLogMsg::count() == before + 1 &&
                         Q(FLogMsg::last().message).startsWith(path + ": "),
                     text);
            if (qstrncmp(text, "{\n", 2) == 0)
                QVERIFY2(Q(FLogMsg::last().message).contains("values.json: line 2, column 1"),
                         FLogMsg::last().message.c_str());
        }
    }

    void runsSeveralAtOnce()
    {
        // Each of the two waits for the other.
        Study study("case $x in 1) how=read;; *) how=write;; esac\n"
                    "$fakesim meet ../../../fifo $how && $fakesim sum in.txt out.txt");
        QCOMPARE(::mkfifo(study.path("fifo").toUtf8().constData(), 0600), 0);
        study.chain.pop_back();
        FRunQueue one;
        one.setTimeout(0.2);
        QCOMPARE(study.run(&one, 1, 2),
                 QStringList({"d1 first: time limit of 0.2 s", "d2 first: time limit of 0.2 s"}));
        FRunQueue two;
        study.run(&two, 2, 2);
        QCOMPARE(two.failed(), size_t(0));
    }

    void failureStopsItsOwnDesign()
    {
        Study study("case $x in 2) exit 7;; esac; $fakesim sum in.txt out.txt");
        FRunQueue queue;
        QCOMPARE(study.run(&queue, 1, 3),
                 QStringList({"d1 first: finished", "d1 second: finished", "d2 first: exit code 7",
                              "d2 second: computation first did not finish", "d3 first: finished",
                              "d3 second: finished"}));
        QVERIFY(!QFile::exists(study.runPath("d2", "second")));
        QVERIFY(std::isnan(study.value("z", study.designs[1])));
        QCOMPARE(study.value("z", study.designs[2]), 4.0);
        FRunQueue strict;
        strict.setKeepGoing(false);
        QCOMPARE(
            study.run(&strict, 1, 3),
            QStringList(
                {"d1 first: finished", "d1 second: finished", "d2 first: exit code 7",
                 "d2 second: computation first did not finish",
                 "d3 first: not started because computation first of design d2 did not finish",
                 "d3 second: not started because computation first of design d2 did not finish"}));
    }

    void oldResultsAreNeverRead()
    {
        Study study("test -e ../../../fail || { echo 'sum = 5' >out.txt; echo x >extra; }");
        FRunQueue good;
        QCOMPARE(study.run(&good, 1, 1).first(), QString("d1 first: finished"));
        QCOMPARE(study.value("y", study.designs[0]), 6.0);
        QVERIFY(QFile::exists(study.runPath("d1", "first/extra")));
        QVERIFY(QFile(study.path("fail")).open(QIODevice::WriteOnly));
        FRunQueue bad;
        QCOMPARE(study.run(&bad, 1, 1).first(), QString("d1 first: result file out.txt missing"));
        QVERIFY(std::isnan(study.value("y", study.designs[0])));
        QVERIFY(!QFile::exists(study.runPath("d1", "first/extra")));
        QVERIFY(!QFile::exists(study.runPath("d1", "first/.turnbuckle/values.json")));
        QCOMPARE(jsonOf(study.runPath("d1", "first/.turnbuckle/run.json"))["state"].toString(),
                 QString("failed"));
    }

    void cancelEndsWhatRuns()
    {
        Study study(
            "case $x in 1) $fakesim sum in.txt out.txt;; *) $fakesim fork-hang ../../../pid hang;; "
            "esac");
        FRunQueue queue;
        QTimer watch;
        QObject::connect(&watch, &QTimer::timeout, &watch, [&] {
            if (QFile::exists(study.path("pid")))
                queue.cancel();
        });
        watch.start(5);
        QCOMPARE(study.run(&queue, 1, 3),
                 QStringList({"d1 first: finished", "d1 second: finished", "d2 first: cancelled",
                              "d2 second: computation first did not finish", "d3 first: cancelled",
                              "d3 second: cancelled"}));
        QVERIFY(queue.isCancelled());
        QVERIFY(::kill(contentOf(study.path("pid")).trimmed().toInt(), 0) != 0);
        for (const FRunRecord &record : queue.records())
            QCOMPARE(record.state,
                     record.design == "d1" ? FRunState::Finished : FRunState::Cancelled);
    }

    void cancelOfOneLeavesTheOthers()
    {
        Study study("case $x in 2) $fakesim fork-hang ../../../pid hang;; "
                    "*) $fakesim sum in.txt out.txt;; esac");
        FRunQueue queue;
        for (size_t i = 0; i < 4; ++i)
            queue.add(study.designs[i], study.chain);
        const auto idOf = [&](const char *design) {
            for (const auto &item : queue.items())
                if (item.design == design && item.computation == "first")
                    return item.id;
            return 0U;
        };
        const unsigned last = idOf("d4");
        QVERIFY(last && !queue.cancel(last + 100));
        QVERIFY(queue.cancel(last)); // it waits
        queue.start(2);
        QTRY_VERIFY(QFile::exists(study.path("pid")));
        QVERIFY(queue.cancel(idOf("d2"))); // it runs
        QTRY_VERIFY(queue.isIdle());
        QVERIFY(!queue.isCancelled());
        QVERIFY(::kill(contentOf(study.path("pid")).trimmed().toInt(), 0) != 0);
        QCOMPARE(queue.records().size(), size_t(8));
        for (const FRunRecord &record : queue.records())
            QCOMPARE(record.state, record.design == "d1" || record.design == "d3"
                                       ? FRunState::Finished
                                       : FRunState::Cancelled);
    }

    void aRunThatFailsStartsAgain_data()
    {
        QTest::addColumn<int>("retries");
        QTest::addColumn<QByteArray>("starts");
        QTest::addColumn<QString>("state");
        QTest::newRow("none") << 0 << QByteArray("1\n") << "d1 first: exit code 3";
        QTest::newRow("too few") << 1 << QByteArray("2\n") << "d1 first: exit code 3";
        QTest::newRow("enough") << 4 << QByteArray("3\n") << "d1 first: finished";
    }

    void aRunThatFailsStartsAgain()
    {
        QFETCH(int, retries);
        Study study("n=$(cat ../../../n || echo 0); n=$((n+1)); echo $n >../../../n; "
                    "[ $n -gt 2 ] || exit 3; $fakesim sum in.txt out.txt");
        FRunQueue queue;
        FRunPolicy policy;
        policy.retries = retries;
        queue.setPolicy(policy);
        QTEST(study.run(&queue, 1, 1).first(), "state");
        QCOMPARE(queue.records().size(), size_t(2)); // one of each run, however often it started
        QTEST(contentOf(study.path("n")), "starts");
    }

    void suppliersThatAreStaleRunFirst()
    {
        Study study;
        FDesign::setCurrent(study.designs[1]);
        FRunQueue *queue = FRunQueue::background();
        std::vector<std::string> ran;
        const auto runSecond = [&] {
            study.chain[1]->guiRun();
            QTRY_VERIFY(queue->isIdle());
            ran.clear();
            for (const FRunRecord &record : queue->records()) {
                QVERIFY(record.succeeded() && record.design == "d2");
                ran.push_back(record.computation);
            }
        };
        runSecond();
        QCOMPARE(ran, (std::vector<std::string>{"first", "second"}));
        runSecond(); // the supplier is up to date
        QCOMPARE(ran, std::vector<std::string>{"second"});
        study.designs[1]->setValue("x", FExprBase::resolve("7"));
        runSecond();
        QCOMPARE(ran, (std::vector<std::string>{"first", "second"}));
        QCOMPARE(study.value("z", study.designs[1]), 8.0);
    }

    void queueThatGoesEndsItsRuns()
    {
        Study study("$fakesim hang ../../../pid");
        {
            FRunQueue queue;
            queue.add(study.designs[0], study.chain);
            queue.start(1);
            QTRY_VERIFY(QFile::exists(study.path("pid")));
        }
        // Nobody waits for the end, but it comes.
        QTRY_VERIFY(::kill(contentOf(study.path("pid")).trimmed().toInt(), 0) != 0);
    }

    void endIsToldOnEveryPath_data()
    {
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<QString>("change");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *name, const char *script, const char *change,
                            const char *expected) {
            QTest::newRow(name) << QByteArray(script) << QString(change) << QString(expected);
        };
        row("finished", "$fakesim sum in.txt out.txt", "", "finished");
        row("exit code", "exit 3", "", "exit code 3");
        row("crash", "$fakesim crash 11", "", "exit code 139"); // the shell's word for it
        row("own time limit", "$fakesim hang pid", "limit", "time limit of 0.2 s");
        row("no result", "exit 0", "", "result file out.txt missing");
        row("no program", "", "application=", "no program is set");
        row("program missing", "", "application=no-such-program",
            "cannot start no-such-program: not found");
        row("program is a folder", "", "application=/tmp", "cannot start /tmp: is a directory");
        row("open quote", "", "arguments=run.sh 'x",
            "a quote without end in the arguments run.sh 'x");
        row("no input", "", "input=none.txt",
            "cannot open standard input none.txt: No such file or directory");
        row("no runner", "", "runner", "cannot start /no/such/runner: No such file or directory");
        row("no place", "", "place", "cannot make the run folder");
    }

    void endIsToldOnEveryPath()
    {
        QFETCH(QByteArray, script);
        QFETCH(QString, change);
        QFETCH(QString, expected);
        Study study(script);
        const auto computation = study.chain[0];
        const std::string value = S(change.mid(change.indexOf('=') + 1));
        if (change.startsWith("application"))
            computation->setApplication(value);
        else if (change.startsWith("arguments"))
            computation->setArguments(value);
        else if (change.startsWith("input"))
            computation->setStandardInput(value);
        else if (change == "limit")
            computation->setTimeout(0.2);
        else if (change == "runner")
            qputenv("TURNBUCKLE_RUNNER", "/no/such/runner");
        else if (change == "place")
            QVERIFY(QFile(study.path("study_designs")).open(QIODevice::WriteOnly));
        const Watch watch(computation);
        study.chain.pop_back();
        FRunQueue queue;
        const QString line = study.run(&queue, 1, 1).first();
        QVERIFY2(line.startsWith("d1 first: " + expected), qPrintable(line));
        QCOMPARE(watch.started.count(), 1);
        QCOMPARE(watch.ended.count(), 1);
        QVERIFY(!computation->isRunning());
        const FRunRecord &record = queue.records().front();
        QCOMPARE(record.succeeded(), expected == "finished");
        if (change == "place")
            return;
        const QJsonObject json = jsonOf(study.runPath("d1", "first/.turnbuckle/run.json"));
        QCOMPARE(json["state"].toString(), QString(record.stateText()));
        QCOMPARE(json["reason"].toString(), Q(record.reason));
    }

    void runnerThatWasKilledIsReplaced()
    {
        Study study;
        FRunQueue before;
        study.run(&before, 1, 1);
        QCOMPARE(before.failed(), size_t(0));
        const QByteArray tasks =
            contentOf(QStringLiteral("/proc/self/task/%1/children").arg(::getpid()));
        QVERIFY(!tasks.trimmed().isEmpty());
        for (const QByteArray &pid : tasks.trimmed().split(' ')) {
            siginfo_t end;
            QCOMPARE(::kill(pid.toInt(), SIGKILL), 0);
            QCOMPARE(::waitid(P_PID, id_t(pid.toInt()), &end, WEXITED | WNOWAIT), 0);
        }
        FRunQueue after;
        study.run(&after, 1, 2);
        QCOMPARE(after.failed(), size_t(0));
    }

    void environmentIsOfOneRunOnly()
    {
        Study study("$fakesim env F_TEST_WORD word; $fakesim sum in.txt out.txt",
                    "$fakesim env F_TEST_WORD word; $fakesim sum in.txt out.txt");
        study.chain[0]->setEnvironment({"F_TEST_WORD=one two=3"});
        FRunQueue queue;
        study.run(&queue, 1, 1);
        QCOMPARE(contentOf(study.runPath("d1", "first/word")), QByteArray("one two=3"));
        QCOMPARE(contentOf(study.runPath("d1", "second/word")), QByteArray("(unset)"));
        // What this process sets while the runner is at hand arrives as well.
        qputenv("F_TEST_WORD", "four");
        FRunQueue again;
        study.run(&again, 1, 1);
        qunsetenv("F_TEST_WORD");
        QCOMPARE(contentOf(study.runPath("d1", "second/word")), QByteArray("four"));
    }

    void longCommandLine()
    {
        Study study("echo sum = $# >out.txt; echo $5 | wc -c >>out.txt");
        const std::string word(100000, 'w');
        study.chain[0]->setArguments("run.sh " + word + " " + word + " " + word + " " + word +
                                     " 'last one'");
        study.chain.pop_back();
        FRunQueue queue;
        study.run(&queue, 1, 1);
        QCOMPARE(contentOf(study.runPath("d1", "first/out.txt")), QByteArray("sum = 5\n9\n"));
    }

    void doubtsStandBesideTheRecord()
    {
        Study study("$fakesim half half.txt; cp half.txt out.txt", "echo 'sum = ****' >out.txt");
        FRunQueue queue;
        study.run(&queue, 1, 1);
        const auto row = [&](const char *file) {
            return jsonOf(study.runPath("d1", file))["tables"]
                .toArray()[0]
                .toObject()["rows"]
                .toArray()[0]
                .toObject();
        };
        const QJsonObject good = row("first/.turnbuckle/values.json"),
                          bad = row("second/.turnbuckle/values.json");
        QCOMPARE(good["name"].toString(), QString("sum"));
        QCOMPARE(good["value"].toDouble(), 12.5);
        QVERIFY(good["where"].toString().endsWith("out.txt:1:7-10"));
        QVERIFY(bad.contains("value") && bad["value"].isNull());
        QVERIFY(!bad["note"].toString().isEmpty());
    }

    void notesInputsWithoutNumber()
    {
        // A number that is missing goes into the next program as nan, and its values tell.
        Study next("echo 'sum = ****' >out.txt", "echo 'sum = 7' >out.txt");
        FRunQueue other;
        next.run(&other, 1, 1);
        QCOMPARE(other.failed(), size_t(0));
        const auto values = FStudy::cell(next.chain[1], next.designs[0]).tables.at(0).rows;
        QCOMPARE(values.at(0).value, 7.0);
        QCOMPARE(values.at(0).note(), std::string("input y was nan"));
        QCOMPARE(jsonOf(next.runPath("d1", "second/.turnbuckle/run.json"))["inputsWithoutNumber"]
                     .toArray()
                     .size(),
                 1);
    }

    void recordsReachTheDiskInBatches()
    {
        Study study;
        FRunSync *sync = FRunSync::instance();
        const uint64_t before = sync->batches();
        FRunQueue queue;
        study.run(&queue, 2);
        // The end of the queue waits for the last batch; no run had one of its own.
        const uint64_t after = sync->batches();
        QVERIFY(after > before && after - before < 8);
        sync->add(S(study.path(".")));
        QTRY_VERIFY_WITH_TIMEOUT(sync->batches() == after + 1, 4000); // without being asked
    }

    void designsCostTheSameHoweverManyThereAre()
    {
        // Staleness of one design doesn't reach the values of another.
        Study study;
        const auto x = FObjectManager::instance()->find("x");
        FDesign::setCurrent(study.designs[0]);
        QCOMPARE(study.value("x", study.designs[0]), 1.0);
        for (const auto &design : study.designs)
            QVERIFY(!x->hasClient(design, true) && !x->clients().contains(design.get()));
    }
};

QTEST_GUILESS_MAIN(TestRunQueue)
#include "tst_runqueue.moc"
