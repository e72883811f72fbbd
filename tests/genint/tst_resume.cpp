// SPDX-License-Identifier: Apache-2.0
// Studies that go on: what is kept, what runs again, and what a kill costs.
#include "fgenintresultsfile.h"
#include "study.h"
#include "testseed.h"

#include <csignal>
#include <functional>
#include <random>

namespace {
/// Tells in the project's folder which design it starts for.
const QByteArray kTells = "echo $x >>../../../starts; $fakesim sum in.txt out.txt";
} // namespace

class TestResume : public QObject
{
    Q_OBJECT

    static FRunPolicy policy(FRunPolicy::Earlier earlier, bool trustProgram = false)
    {
        FRunPolicy policy;
        policy.earlier = earlier;
        policy.trustProgram = trustProgram;
        return policy;
    }
    /// Runs all designs and gives the numbers of those that the first computation started for.
    static QByteArray started(Study *study, const FRunPolicy &policy, QStringList *told = nullptr)
    {
        QFile::remove(study->path("starts"));
        FRunQueue queue;
        queue.setPolicy(policy);
        const QStringList lines = study->run(&queue, 2);
        if (told)
            *told = lines;
        QList<QByteArray> starts = contentOf(study->path("starts")).split('\n');
        std::sort(starts.begin(), starts.end());
        return starts.join().trimmed();
    }
    template <class T>
    static std::shared_ptr<T> object(const char *name)
    {
        return std::dynamic_pointer_cast<T>(FObjectManager::instance()->find(name));
    }
    static void write(const QString &path, const QByteArray &bytes)
    {
        QFile file(path);
        QVERIFY(file.open(QFile::WriteOnly) && file.write(bytes) == bytes.size());
    }

private Q_SLOTS:
    void initTestCase()
    {
        qputenv("TURNBUCKLE_RUNNER", F_BIN_DIR "/turnbuckle-runner");
        FObject::initPrototypes();
    }

    void whatIsTheSameIsKept()
    {
        Study study(kTells);
        const auto reuse = [&] { return started(&study, policy(FRunPolicy::Reuse)); };
        QCOMPARE(reuse(), QByteArray("1234"));
        QCOMPARE(study.value("z", study.designs[2]), 4.0);
        const QByteArray kept = contentOf(study.runPath("d2", "first/.turnbuckle/run.json"));
        // The same, in this session and in another one.
        QCOMPARE(reuse(), QByteArray());
        QCOMPARE(contentOf(study.runPath("d2", "first/.turnbuckle/run.json")), kept);
        QVERIFY(FProject::instance()->open(study.path("study.tbk")));
        for (size_t i = 0; i < 2; ++i)
            study.chain[i] = object<FExternComputation>(i == 0 ? "first" : "second");
        for (size_t i = 0; i < 4; ++i)
            study.designs[i] = object<FDesign>(("d" + std::to_string(i + 1)).c_str());
        QStringList told;
        QCOMPARE(started(&study, policy(FRunPolicy::Reuse), &told), QByteArray());
        QCOMPARE(told.filter(": finished").size(), 8);
        QCOMPARE(study.value("z", study.designs[2]), 4.0);
        QVERIFY(study.chain[1]->isUpToDateFor(study.designs[2]));
        // What the program gets differs, or what it left.
        const struct
        {
            std::function<void()> change;
            const char *starts;
        } changes[] = {
            {[&] { study.designs[2]->setValue("x", FExprBase::resolve("7")); }, "7"},
            {[&] { write(study.runPath("d1", "first/out.txt"), "sum = 99\n"); }, "1"},
            {[&] { QFile::remove(study.runPath("d2", "first/out.txt")); }, "2"},
            {[&] { study.chain[0]->setEnvironment({"A=1"}); }, "1247"},
            {[&] {
                 study.chain[0]->setEnvironment({"A=1", "B="});
             },
             "1247"},
            {[&] { study.chain[0]->setArguments("run.sh A"); }, "1247"},
            {[&] {
                 const auto file = object<FGenIntFile>("first_in");
                 file->setContent(file->text() + " ");
             },
             "1247"},
            {[&] { study.chain[0]->setTimeout(77); }, ""},
        };
        for (const auto &one : changes) {
            one.change();
            QCOMPARE(reuse(), QByteArray(one.starts));
            QCOMPARE(reuse(), QByteArray());
        }
        QCOMPARE(study.value("z", study.designs[0]), 2.0);
        QCOMPARE(study.value("z", study.designs[2]), 8.0);
        QCOMPARE(started(&study, policy(FRunPolicy::Replace)), QByteArray("1247"));
    }

    void anotherProgramIsAnotherRun()
    {
        Study study(kTells);
        const QString tool = study.path("tool");
        write(tool, "#!/bin/sh\nexec sh \"$@\"\n");
        QVERIFY(
            QFile::setPermissions(tool, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        study.chain[0]->setApplication("./tool");
        QCOMPARE(started(&study, policy(FRunPolicy::Reuse)), QByteArray("1234"));
        write(tool, "#!/bin/sh\n\nexec sh \"$@\"\n");
        QCOMPARE(started(&study, policy(FRunPolicy::Reuse, true)), QByteArray());
        QCOMPARE(started(&study, policy(FRunPolicy::Reuse)), QByteArray("1234"));
    }

    void whatWasTornIsSetAside()
    {
        Study study(kTells);
        started(&study, policy(FRunPolicy::Replace));
        for (int i = 1; i < 3; ++i) {
            QVERIFY(QFile::remove(study.runPath("d2", "first/.turnbuckle/run.json")));
            QCOMPARE(started(&study, policy(FRunPolicy::Reuse)), QByteArray("2"));
            const QString aside = QString("first.interrupted-%1/out.txt").arg(i);
            QTRY_COMPARE(contentOf(study.runPath("d2", aside.toUtf8())),
                         QByteArray("sum = 2\nn = 1\n"));
        }
        QVERIFY(!QFile::exists(study.runPath("d1", "first.interrupted-1")));
    }

    void rereadRunsNothing()
    {
        Study study(kTells);
        QStringList told;
        QCOMPARE(started(&study, policy(FRunPolicy::Reread), &told), QByteArray());
        QCOMPARE(told.filter("there is no finished run to read").size(), 4);
        QVERIFY(!QFile::exists(study.runPath("d1", "")));
        started(&study, policy(FRunPolicy::Replace));
        QCOMPARE(study.value("y", study.designs[3]), 5.0);
        object<FGenIntResultsFile>("first_out")
            ->setValues(FExpr<FObjectList>(
                FExprBase::resolve(R"([["sum",0,0,"n",Last,"FDouble","",0,nullptr]])")));
        QCOMPARE(started(&study, policy(FRunPolicy::Reread), &told), QByteArray());
        QCOMPARE(study.value("y", study.designs[3]), 2.0);
        QVERIFY(study.chain[0]->isUpToDateFor(study.designs[3]));
        QVERIFY(contentOf(study.runPath("d4", "first/.turnbuckle/values.json")).contains("\"1\""));
        // The sum of d1 was 1, too. What is read of other inputs is told, and isn't up to date.
        QCOMPARE(told.filter("second: finished, but of other inputs than those of now").size(), 3);
        QVERIFY(!study.chain[1]->isUpToDateFor(study.designs[3]));
    }

    void noDesignStartsOnAFullDisk()
    {
        Study study(kTells);
        FRunPolicy full = policy(FRunPolicy::Reuse);
        full.keepFreeBytes = 1e18;
        QStringList told;
        QCOMPARE(started(&study, full, &told), QByteArray());
        QCOMPARE(told.filter("are free on the disk of the project, and ").size(), 8);
        full.keepFreeBytes = 0;
        QCOMPARE(started(&study, full), QByteArray("1234"));
    }

    /// Nothing that had finished runs again; a kill costs one run at most for each job.
    void killsCostOneRunEach()
    {
        Study study("echo $x >>../../../starts; sleep 0.05; $fakesim sum in.txt out.txt");
        const QString project = study.path("study.tbk");
        std::mt19937 random(testSeed());
        const int kills = qEnvironmentVariable("RIG") == "long" ? 200 : 12;
        int killed = 0;
        const auto run = [&](QProcess *process) {
            process->start(F_BIN_DIR "/turnbuckle",
                           {"run", project, "--all-designs", "--jobs", "1", "--json"});
            QVERIFY(process->waitForStarted());
        };
        for (int i = 0; i < kills; ++i) {
            QProcess process;
            run(&process);
            QTest::qSleep(1 + int(random() % 200));
            killed += process.state() == QProcess::Running;
            ::kill(pid_t(process.processId()), SIGKILL);
            process.waitForFinished();
        }
        QProcess last;
        run(&last);
        QVERIFY(last.waitForFinished());
        QCOMPARE(last.exitCode(), 0);
        const QJsonObject designs =
            QJsonDocument::fromJson(last.readAllStandardOutput()).object()["designs"].toObject();
        for (const char *number : {"1", "2", "3", "4"})
            QCOMPARE(designs[QString("d") + number].toObject()["z"].toDouble(),
                     QByteArray(number).toDouble() + 1);
        const int starts = contentOf(study.path("starts")).count('\n');
        QVERIFY2(starts >= 4 && starts <= 5 + killed, // the baseline is a design, too
                 qPrintable(QString("%1 starts, %2 kills").arg(starts).arg(killed)));
    }
};

QTEST_GUILESS_MAIN(TestResume)
#include "tst_resume.moc"
