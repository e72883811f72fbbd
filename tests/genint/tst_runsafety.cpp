// SPDX-License-Identifier: Apache-2.0
#include "fhistory.h"
#include "fprocesstree.h"
#include "frunlock.h"
#include "fsafefile.h"
#include "mirror.h"
#include "study.h"
#include "testseed.h"

#include <QProcess>
#include <algorithm>
#include <cerrno>
#include <csignal>

// Runs beside a second process, in hostile folders, and under a user who goes on working.
namespace {
const char kGood[] = "$fakesim sum in.txt out.txt";

/// Alone with the first computation of the study.
class OneRun : public Study
{
public:
    explicit OneRun(const QByteArray &script = kGood)
        : Study(script)
    {
        chain.pop_back();
    }
    QString reason(size_t count = 1)
    {
        FRunQueue queue;
        return run(&queue, 1, count).first().section(": ", 1);
    }
    QJsonObject record() const { return jsonOf(runPath("d1", "first/.turnbuckle/run.json")); }
    double sum() const { return value("y", designs[0]) - 1; }
    void start(QProcess *process) const
    {
        process->start(F_BIN_DIR "/turnbuckle",
                       {"run", path("study.tbk"), "--design", "d1", "--computation", "first"});
    }
};

void put(const QString &path, const QByteArray &text)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
}

int failingRename(int, const char *, const char *, unsigned)
{
    errno = ENOSPC;
    return -1;
}

bool isAlive(const QString &pidFile)
{
    const QByteArray stat = contentOf("/proc/" + QString(contentOf(pidFile)).trimmed() + "/stat");
    return !stat.isEmpty() && !stat.contains(") Z ");
}
} // namespace

class TestRunSafety : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        qputenv("TURNBUCKLE_RUNNER", F_BIN_DIR "/turnbuckle-runner");
        FObject::initPrototypes();
    }
    void cleanup() { FSafeFile::setCalls(nullptr); }

    void aSecondProcessIsRefused()
    {
        OneRun study("$fakesim hang ../../../pid");
        QProcess first;
        study.start(&first);
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(study.path("pid")), 20000);
        const QString why = study.reason();
        QVERIFY2(why.contains("belong to user ") &&
                     why.endsWith(QString("process %1").arg(first.processId())),
                 qPrintable(why));
        // The lock goes with its holder, when the program of that one has ended.
        first.kill();
        QVERIFY(first.waitForFinished());
        study.chain[0]->setApplication("true");
        QTRY_COMPARE(study.reason(), QString("result file out.txt missing"));
        QVERIFY(!isAlive(study.path("pid")));

        std::string ignored;
        const auto held = FRunLock::take(study.path("study_designs").toStdString(), &ignored);
        QProcess second;
        study.start(&second);
        QVERIFY(second.waitForFinished());
        QCOMPARE(second.exitCode(), 1);
        QVERIFY(second.readAllStandardError().contains(
            "process " + QByteArray::number(QCoreApplication::applicationPid())));
    }

    void aRunThatCannotStartKeepsTheOldOne()
    {
        OneRun study;
        QCOMPARE(study.reason(), QString("finished"));
        for (const char *program : {"no-such-program", "", "/tmp"}) {
            study.chain[0]->setApplication(program);
            QVERIFY(study.reason() != "finished");
            QCOMPARE(study.record()["state"].toString(), QString("finished"));
            QCOMPARE(contentOf(study.runPath("d1", "first/out.txt")),
                     QByteArray("sum = 1\nn = 1\n"));
            QVERIFY(std::isnan(study.sum())); // but it isn't taken for the result of this one
        }
        QTRY_COMPARE(QDir(study.runPath("d1", ""))
                         .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                     QStringList("first"));
    }

    void aKillLeavesNoRecordWithoutFiles()
    {
        OneRun study("i=0; while [ $i -lt 300 ]; do echo $i >f$i; i=$((i+1)); done; " +
                     QByteArray(kGood) + "; touch end");
        std::mt19937 random(testSeed());
        for (int i = 0; i < 12; ++i) {
            QProcess process;
            study.start(&process);
            QVERIFY(process.waitForStarted());
            if (i > 0) // the first one finishes
                QTest::qSleep(1 + int(random() % 250));
            else
                QVERIFY(process.waitForFinished());
            process.kill();
            process.waitForFinished();
            // The runner writes the record of a run that it ends.
            const QJsonObject record = study.record();
            if (record["state"].toString() == "finished")
                for (const char *name : {"f0", "f299", "out.txt", "end"})
                    QVERIFY2(QFile::exists(study.runPath("d1", "first/") + name), name);
        }
    }

    void linksLeadNowhere_data()
    {
        QTest::addColumn<QString>("link");
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<QString>("expected");
        QTest::newRow("designs") << "study_designs" << QByteArray(kGood)
                                 << "cannot make the run folder";
        QTest::newRow("design") << "study_designs/d1" << QByteArray(kGood)
                                << "cannot make the run folder";
        QTest::newRow("computation")
            << "study_designs/d1/first" << QByteArray(kGood) << "cannot make the run folder";
        const QByteArray own = "ln -sf ../../../../precious/file .turnbuckle/";
        QTest::newRow("values") << "" << kGood + QByteArray("; ") + own + "values.json"
                                << "finished";
        QTest::newRow("record") << "" << kGood + QByteArray("; ") + own + "run.json"
                                << "finished";
        QTest::newRow("own folder")
            << "" << kGood + QByteArray("; rm -r .turnbuckle; ln -s ../../../precious .turnbuckle")
            << "cannot write .turnbuckle/run.json";
        QTest::newRow("result") << "" << QByteArray("ln -s ../../../precious/file out.txt")
                                << "finished";
    }

    void linksLeadNowhere()
    {
        QFETCH(QString, link);
        QFETCH(QByteArray, script);
        QFETCH(QString, expected);
        OneRun study(script);
        QVERIFY(QDir().mkpath(study.path("precious/d1/first")));
        put(study.path("precious/file"), "sum = 77\n");
        if (!link.isEmpty()) {
            QVERIFY(QDir().mkpath(QFileInfo(study.path(link)).path()));
            QVERIFY(QFile::link(study.path("precious"), study.path(link)));
        }
        const QString reason = study.reason();
        QVERIFY2(reason.startsWith(expected), qPrintable(reason));
        QCOMPARE(contentOf(study.path("precious/file")), QByteArray("sum = 77\n"));
        QCOMPARE(QDir(study.path("precious")).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                 QStringList({"d1", "file"}));
        QVERIFY(study.sum() != 77);
    }

    void leftProcessesAreTold()
    {
        const QByteArray script = "echo 'sum = 5' >out.txt; "
                                  "{ sleep 0.3; echo 'sum = 6' >out.txt; } &";
        OneRun study(script);
        const auto row = [&] {
            return jsonOf(study.runPath("d1", "first/.turnbuckle/values.json"))["tables"]
                .toArray()[0]
                .toObject()["rows"]
                .toArray()[0]
                .toObject();
        };
        QCOMPARE(study.reason(), QString("finished"));
        QVERIFY(study.record()["processesEnded"].toInt() > 0);
        QVERIFY(row()["note"].toString().contains("left in the background"));
        QCOMPARE(row()["value"].toDouble(), 5.0);
        study.chain[0]->setWaitForAll(true);
        QCOMPARE(study.reason(), QString("finished"));
        QCOMPARE(study.record()["processesEnded"].toInt(), 0);
        QVERIFY(row()["note"].toString().isEmpty());
        QCOMPARE(row()["value"].toDouble(), 6.0);
        study.chain[0]->setTimeout(0.1);
        QCOMPARE(study.reason(), QString("time limit of 0.1 s"));
    }

    void valuesThatCannotBeWrittenFailTheRun()
    {
        OneRun study;
        FFileCalls calls = FFileCalls::system();
        calls.rename = failingRename;
        FSafeFile::setCalls(&calls);
        const QString reason = study.reason();
        QVERIFY2(reason.startsWith("the values can't be written: "), qPrintable(reason));
        QVERIFY(study.record()["state"].toString() != "finished");
        QVERIFY(std::isnan(study.sum()));
    }

    void whatAKilledRunnerLeavesIsEnded()
    {
        OneRun study("$fakesim fork-hang ../../../pid hang");
        FRunQueue queue;
        queue.add(study.designs[0], study.chain);
        queue.start(1);
        QTRY_VERIFY(QFile::exists(study.path("pid")));
        for (const QByteArray &pid :
             contentOf(QString("/proc/self/task/%1/children").arg(::getpid())).trimmed().split(' '))
            ::kill(pid.toInt(), SIGKILL);
        QTRY_VERIFY(queue.isIdle());
        QCOMPARE(queue.records().front().state, FRunState::Failed);
        QVERIFY(!isAlive(study.path("pid")));
    }

    void anEditDuringARunLeavesItsValuesStale()
    {
        OneRun study("$fakesim late go 200; " + QByteArray(kGood));
        FRunQueue queue;
        const auto user = FDesign::current();
        queue.add(study.designs[0], study.chain);
        queue.start(1);
        QCOMPARE(FDesign::current(), user);
        study.designs[0]->setValue("x", FExprBase(f_make_shared<FDouble>(8)));
        QTRY_VERIFY(queue.isIdle());
        QCOMPARE(FDesign::current(), user);
        QVERIFY(queue.records().front().succeeded() && queue.records().front().inputsChanged);
        QVERIFY(study.record()["inputsChanged"].toBool());
        QVERIFY(!study.chain[0]->isUpToDateFor(study.designs[0]));
        // Again, without an edit, and in the same queue after a stop.
        queue.add(study.designs[0], study.chain);
        queue.start(1);
        queue.cancel();
        QTRY_VERIFY(queue.isIdle());
        QCOMPARE(queue.records().size(), size_t(1));
        QCOMPARE(queue.records().front().state, FRunState::Cancelled);
        queue.add(study.designs[0], study.chain);
        queue.start(1);
        QTRY_VERIFY(queue.isIdle());
        QVERIFY(study.chain[0]->isUpToDateFor(study.designs[0]));
        QCOMPARE(study.sum(), 8.0);
    }

    void aRenameMovesTheFolder()
    {
        OneRun study;
        QCOMPARE(study.reason(), QString("finished"));
        FHistory::instance()->clear();
        for (const std::shared_ptr<FManaged> &object :
             {std::shared_ptr<FManaged>(study.designs[0]),
              std::shared_ptr<FManaged>(study.chain[0])}) {
            const QString before = Q(object->getName());
            const QString old = study.runPath("d1", "first/out.txt");
            QString moved = old;
            moved.replace("/" + before + "/", "/other/");
            object->setName("other");
            QVERIFY(QFile::exists(moved) && !QFile::exists(old));
            QVERIFY(study.chain[0]->isUpToDateFor(study.designs[0]));
            QCOMPARE(study.sum(), 1.0);
            QVERIFY(FHistory::instance()->undo());
            QVERIFY(QFile::exists(old) && !QFile::exists(moved));
            FRunQueue queue;
            queue.add(study.designs[0], study.chain);
            queue.start(1);
            object->setName("other");
            QCOMPARE(Q(object->getName()), before);
            QTRY_VERIFY(queue.isIdle());
        }
    }

    void aUserWorksDuringRuns()
    {
        std::mt19937 random(testSeed());
        FRunQueue *queue = FRunQueue::background();
        int started = 0;
        QObject counter;
        connect(queue, &FRunQueue::started, &counter, [&] { ++started; });
        for (int round = 0; round < 12; ++round) {
            Study study("$fakesim late go 30; " + QByteArray(kGood));
            Mirror mirror;
            const auto equalsTheModel = [&](const char *when) {
                while (FChanges::instance()->isPending())
                    QCoreApplication::processEvents();
                const QString difference = mirror.picture.difference(Picture::fresh());
                QVERIFY2(difference.isEmpty(), qPrintable(when + (":\n" + difference)));
            };
            std::map<std::pair<size_t, size_t>, double> inputs; // of runs that ended
            std::weak_ptr<FExternComputation> gone;
            auto user = FDesign::current();
            for (int step = 0; step < 40; ++step) {
                const size_t d = random() % 4, c = random() % 2;
                const auto &design = study.designs[d];
                switch (random() % 8) {
                case 0:
                case 1:
                case 2:
                    if (!design->isDestroyed() && !study.chain[c]->isDestroyed()) {
                        FDesign::setCurrent(design);
                        user = design;
                        study.chain[c]->guiRun();
                    }
                    break;
                case 3:
                    if (!design->isDestroyed())
                        design->setValue("x", FExprBase(f_make_shared<FDouble>(double(step))));
                    break;
                case 4:
                    FHistory::instance()->undo();
                    user = FDesign::current();
                    break;
                case 5:
                    if (step > 20) {
                        FManaged::destroy(design, true);
                        user = FDesign::current();
                    }
                    break;
                case 6:
                    if (!queue->items().empty())
                        queue->cancel(queue->items().front().id);
                    break;
                default:
                    QTest::qWait(20);
                }
                QCOMPARE(FDesign::current(), user);
                equalsTheModel(qPrintable(QString("step %1").arg(step)));
                if (QTest::currentTestFailed())
                    return;
            }
            if (round % 2 == 1) {
                FProject::instance()->clear(); // under whatever runs
                QVERIFY(queue->items().empty());
                QTest::qWait(150);
                QVERIFY(getManageds<FComputationResults>().empty());
                equalsTheModel("closed");
                continue;
            }
            QTRY_VERIFY_WITH_TIMEOUT(queue->isIdle(), 20000);
            QCOMPARE(FDesign::current(), user);
            equalsTheModel("idle");
            for (const auto &design : study.designs)
                if (!design->isDestroyed() && study.chain[0]->isUpToDateFor(design)) {
                    const double sum = study.value("y", design) - 1;
                    QCOMPARE(sum, study.value("x", design));
                }
        }
        QVERIFY2(started > 30, qPrintable(QString::number(started)));
        // The runners are at hand, and nothing is below them.
        QTRY_VERIFY_WITH_TIMEOUT(signalDescendants(0) <= int(childrenOfThisProcess().size()),
                                 10000);
    }
};

QTEST_GUILESS_MAIN(TestRunSafety)
#include "tst_runsafety.moc"
