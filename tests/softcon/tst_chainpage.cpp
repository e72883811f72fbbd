// SPDX-License-Identifier: Apache-2.0
// The page that shows couplings as a picture: it follows the model, and mouse and keys work.
#include "frunqueue.h"
#include "fsoftconchainpage.h"
#include "workbench.h"

class TestChainPage : public QObject
{
    Q_OBJECT
    QTemporaryDir mFolder;

private Q_SLOTS:
    void initTestCase() { Workbench::once(mFolder.path()); }

    void followsTheModelAndItsUser()
    {
        const QString copy = mFolder.path() + "/chain.tbk";
        QVERIFY(QFile::copy(F_SOURCE_DIR "/examples/chain/chain.tbk", copy));
        Workbench bench(copy);
        Workbench::act("viewChain");
        Workbench::turn();
        auto *page =
            qobject_cast<FSoftConChainPage *>(bench.window()->documents()->currentWidget());
        QVERIFY(page);
        const auto node = [page](const std::string &id) {
            const auto &all = page->graph().nodes();
            for (size_t i = 0; i < all.size(); ++i)
                if (all[i].id == id)
                    return int(i);
            return -1;
        };
        QVERIFY(node("computation discharge") >= 0 && node("file discharge pulse.inp ") >= 0);
        QCOMPARE(page->graph().nodes()[size_t(node("parameter voltage"))].detail,
                 std::string("100"));
        // A change of the model, and its undo.
        FDispatcher::script("voltage.setValue(120);");
        QTRY_COMPARE(page->graph().nodes()[size_t(node("parameter voltage"))].detail,
                     std::string("120"));
        FHistory::instance()->undo();
        QTRY_COMPARE(page->graph().nodes()[size_t(node("parameter voltage"))].detail,
                     std::string("100"));
        // A click selects everywhere, and what is selected elsewhere is shown.
        QTRY_VERIFY(page->view()->viewport()->rect().contains(page->placeOf("computation block")));
        QTest::mouseClick(page->view()->viewport(), Qt::LeftButton, {},
                          page->placeOf("computation block"));
        const auto object = [](const char *name) { return FObjectManager::instance()->find(name); };
        QVERIFY(object("block")->isSelected());
        FSelectionSet::instance()->set({FExprBase(object("voltage"))}, true);
        QTRY_COMPARE(page->current(), node("parameter voltage"));
        // From the parameter by keys to the computation that it feeds.
        page->view()->setFocus();
        QTest::keyClick(page->view(), Qt::Key_Right);
        QVERIFY(object("discharge")->isSelected());
        QTest::keyClick(page->view(), Qt::Key_Return);
        QTRY_VERIFY(bench.window()->documents()->currentWidget() != page);
        QVERIFY(FSoftwareConnector::of(object("discharge").get()));
        // States follow the runs, while the page is hidden, too.
        Workbench::act("runCurrent");
        QTRY_VERIFY_WITH_TIMEOUT(FRunQueue::background()->isIdle(), 30000);
        FDispatcher::script("block.setApplication(\"no_such_program\");");
        Workbench::act("runCurrent"); // leaves what the run before has left
        QTRY_VERIFY_WITH_TIMEOUT(FRunQueue::background()->isIdle(), 30000);
        Workbench::act("viewChain");
        QCOMPARE(bench.window()->documents()->currentWidget(), page);
        QTRY_COMPARE(int(page->graph().nodes()[size_t(node("computation block"))].state),
                     int(FStudy::Failed));
        QCOMPARE(int(page->graph().nodes()[size_t(node("computation discharge"))].state),
                 int(FStudy::UpToDate));
        QTest::mouseDClick(page->view()->viewport(), Qt::LeftButton, {},
                           page->placeOf("value discharge stdout.txt peak_power"));
        QTRY_VERIFY(bench.window()->documents()->currentWidget() != page);
        const QString path = mFolder.path() + "/chain.svg";
        QVERIFY(page->exportTo(path));
        QFile file(path);
        QVERIFY(file.open(QFile::ReadOnly) && file.readAll().contains(">failed<"));
        QVERIFY(!page->exportTo(mFolder.path() + "/none/chain.svg"));
    }
};

QTEST_MAIN(TestChainPage)
#include "tst_chainpage.moc"
