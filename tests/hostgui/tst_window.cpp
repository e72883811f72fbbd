// SPDX-License-Identifier: Apache-2.0
// The window shows a library that it knows nothing of: tree, properties, menus, finder.
#include "factions.h"
#include "fdesign.h"
#include "fdesignsmodel.h"
#include "fdesignspage.h"
#include "fdispatcher.h"
#include "fdocumentation.h"
#include "ffinder.h"
#include "fhistory.h"
#include "fio.h"
#include "fmainwindow.h"
#include "fmodelpanel.h"
#include "fobjecteditorwgt.h"
#include "fobjectmanager.h"
#include "fproject.h"
#include "fprojectcontrol.h"
#include "fselectionset.h"
#include "fsettingsdialog.h"
#include "ftheme.h"
#include "looks.h"
#include "toy.h"

#include <QTemporaryDir>
#include <QtTest>
#include <QtWidgets>

class TestWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void treeFollowsTheFeed();
    void treeRenamesAndDeletes();
    void propertiesOfAToy();
    void refusedValueStays();
    void severalObjectsAtOnce();
    void tableFromAndToAFile();
    void designVariables();
    void finderFindsActionsAndObjects();
    void menuEntryOfTheRegistry();
    void projectIsAskedFor();
    void savedElsewhereItLivesThere();
    void copyAndPaste();
    void settingsCount();
    void actionsAreSound();
    void looksAreSound();

private:
    template <class T = QLineEdit>
    T *field(const char *id)
    {
        return mWindow->properties()->findChild<T *>(QLatin1String("value_") + QLatin1String(id));
    }
    std::shared_ptr<FToy> toy(const char *name)
    {
        FDispatcher::create("toy", name);
        return std::dynamic_pointer_cast<FToy>(FObjectManager::instance()->find(name));
    }
    void select(const std::vector<std::shared_ptr<FObject>> &objects)
    {
        FSelectionSet::instance()->set({objects.begin(), objects.end()}, true);
        QCoreApplication::processEvents();
    }
    void script(const char *text)
    {
        QVERIFY(FDispatcher::script(text).error.empty());
        QCoreApplication::processEvents();
    }
    QStringList rows(const QModelIndex &parent = {}) const;

    QTemporaryDir mFolder;
    std::unique_ptr<FDocuTranslator> mTexts;
    FMainWindow *mWindow = nullptr;
};

void TestWindow::initTestCase()
{
    qputenv("TURNBUCKLE_CONFIG", (mFolder.path() + "/settings.ini").toUtf8());
    mTexts = std::make_unique<FDocuTranslator>();
    QCoreApplication::installTranslator(mTexts.get());
    FObject::initPrototypes();
    FTheme::instance()->setChoice(FTheme::Choice::Light);
}

void TestWindow::init()
{
    FProject::instance()->clear();
    mWindow = new FMainWindow;
    mWindow->resize(1200, 800);
    mWindow->show();
    QVERIFY(QTest::qWaitForWindowExposed(mWindow));
    QVERIFY(FProjectControl::instance()->newProject());
    QCoreApplication::processEvents();
}

void TestWindow::cleanup()
{
    FHistory::instance()->markClean();
    FProjectControl::instance()->close();
    delete mWindow;
    FProject::instance()->clear();
}

QStringList TestWindow::rows(const QModelIndex &parent) const
{
    QStringList found;
    const QAbstractItemModel *model = mWindow->modelPanel()->view()->model();
    for (int row = 0; row < model->rowCount(parent); ++row) {
        const QModelIndex index = model->index(row, 0, parent);
        found << index.data().toString() << rows(index);
    }
    return found;
}

void TestWindow::treeFollowsTheFeed()
{
    const QStringList whole{"Parameters",    "h",  "w", "Designs", "baseline",
                            "Other objects", "t1", "t2"};
    script("parameter h(1); parameter w(h*2); toy t1(); toy t2();");
    QCOMPARE(rows(), whole);
    script("t1.destroy(); h.setName(\"height\");");
    QVERIFY(rows().contains("height") && !rows().contains("t1"));
    FHistory::instance()->undo();
    QCoreApplication::processEvents();
    QCOMPARE(rows(), whole); // the old place, too
    while (FHistory::instance()->undo())
        ;
    QCoreApplication::processEvents();
    QCOMPARE(rows(), QStringList({"Designs", "baseline"}));
    while (FHistory::instance()->redo())
        ;
    QCoreApplication::processEvents();
    QVERIFY(rows().contains("height") && !rows().contains("t1"));
}

void TestWindow::treeRenamesAndDeletes()
{
    const auto one = toy("one");
    toy("two");
    QCoreApplication::processEvents();
    select({one});
    QTreeView *view = mWindow->modelPanel()->view();
    QCOMPARE(view->currentIndex().data().toString(), QStringLiteral("one"));
    view->setFocus();
    QTest::keyClick(view, Qt::Key_F2);
    auto *editor = view->viewport()->findChild<QLineEdit *>();
    QVERIFY(editor);
    QTest::keyClicks(editor, "uno");
    QTest::keyClick(editor, Qt::Key_Return);
    QCoreApplication::processEvents(); // a delegate commits in the next turn
    QCOMPARE(Q(one->getName()), QStringLiteral("uno"));
    FActions::instance()->refresh();
    FActions::instance()->action("editDelete")->trigger();
    QCoreApplication::processEvents();
    QVERIFY(one->isDestroyed());
    QVERIFY(!rows().contains("uno"));
    FActions::instance()->refresh();
    FActions::instance()->action("editUndo")->trigger();
    QCoreApplication::processEvents();
    QVERIFY(!one->isDestroyed());
    QVERIFY(rows().contains("uno"));
}

void TestWindow::propertiesOfAToy()
{
    const auto one = toy("one"), two = toy("two");
    const size_t before = FHistory::instance()->stepCount();
    select({one});
    QVERIFY(!field("setSecret"));
    auto *text = field("setText");
    QVERIFY(text);
    text->setFocus();
    QTest::keyClicks(text, "hello \"you\"");
    QTest::keyClick(text, Qt::Key_Return);
    QCOMPARE(one->getText(), std::string("hello \"you\""));
    auto *size = field("setSize");
    size->setFocus();
    size->selectAll();
    QTest::keyClicks(size, "7");
    QTest::keyClick(size, Qt::Key_Escape);
    QCOMPARE(size->text(), QStringLiteral("1"));
    size->selectAll();
    QTest::keyClicks(size, "2+1");
    text->setFocus(); // leaving commits
    QCOMPARE(one->getSize(), 3.0);
    auto *tick = field<QCheckBox>("setOn");
    QTest::mouseClick(tick, Qt::LeftButton, {}, QPoint(8, tick->height() / 2));
    QVERIFY(one->isOn());
    auto *shape = field<QComboBox>("setShape");
    QCOMPARE(shape->count(), 2);
    QTest::keyClick(shape, Qt::Key_Down);
    QCOMPARE(int(one->getShape()), int(Shape::Square));
    auto *other = field<QComboBox>("setFriend");
    QCOMPARE(other->currentText(), QStringLiteral("none"));
    QTest::keyClicks(other, "tw");
    QCOMPARE(one->getFriend().getPtr(), two);
    QCOMPARE(FHistory::instance()->stepCount(), before + 5); // each a step of its own
    for (int i = 0; i < 5; ++i)
        FHistory::instance()->undo();
    QCoreApplication::processEvents();
    QCOMPARE(field("setText")->text(), QString());
    QCOMPARE(field("setSize")->text(), QStringLiteral("1"));
    QCOMPARE(field<QComboBox>("setFriend")->currentText(), QStringLiteral("none"));
}

void TestWindow::refusedValueStays()
{
    const auto one = toy("one");
    select({one});
    auto *size = field("setSize");
    size->setFocus();
    for (const auto &[typed, reason] :
         {std::pair{"-4", "a size of 0 or more"}, {"3*", "column"}, {"nobody", "nobody"}}) {
        size->selectAll();
        QTest::keyClicks(size, typed);
        QTest::keyClick(size, Qt::Key_Return);
        QCOMPARE(size->text(), QString(typed));
        QCOMPARE(one->getSize(), 1.0);
        const auto *note = size->parentWidget()->findChild<QLabel *>("reason");
        QVERIFY(note && note->isVisible());
        QVERIFY2(note->text().contains(reason), qPrintable(note->text()));
        // A change of the model doesn't take away what is being typed.
        script("one.setText(\"x\");");
        QCOMPARE(size->text(), QString(typed));
    }
    QTest::keyClick(size, Qt::Key_Escape);
    QCOMPARE(size->text(), QStringLiteral("1"));
    QVERIFY(!size->parentWidget()->findChild<QLabel *>("reason"));
}

void TestWindow::severalObjectsAtOnce()
{
    const auto one = toy("one"), two = toy("two");
    one->setText("a");
    FHistory::instance()->track(one);
    select({one, two});
    auto *text = field("setText");
    QCOMPARE(text->placeholderText(), QStringLiteral("several values"));
    text->setFocus();
    QTest::keyClicks(text, "both");
    QTest::keyClick(text, Qt::Key_Return);
    QCOMPARE(Q(one->getText() + two->getText()), QStringLiteral("bothboth"));
    FHistory::instance()->undo();
    QCOMPARE(Q(one->getText() + two->getText()), QStringLiteral("a"));
}

void TestWindow::tableFromAndToAFile()
{
    script("parameter a(1); parameter b(2*a);");
    QTemporaryDir folder;
    const QString path = folder.filePath("t.csv"), back = folder.filePath("back.tsv");
    const auto write = [&](const char *text) {
        QFile file(path);
        QVERIFY(file.open(QFile::WriteOnly) && file.write(text) > 0);
    };
    FDesignsPage *page = mWindow->designs();
    write("design,a\nslim,0.1\nwide,x\n");
    QVERIFY(!page->importFrom(path));
    const auto *reason = page->findChild<QLabel *>("reason");
    QVERIFY2(reason->text().startsWith("Nothing was imported: ") &&
                 reason->text().contains("t.csv:3:6: expected a number for a, found \"x\""),
             qPrintable(reason->text()));
    QVERIFY(!FObjectManager::instance()->find("slim"));
    write("design,a\nslim,0.1\nwide,0.30000000000000004\n");
    QVERIFY(page->importFrom(path));
    QTRY_COMPARE(page->model()->rowCount(), 3);
    QVERIFY(page->exportTo(back));
    QFile file(back);
    QVERIFY(file.open(QFile::ReadOnly));
    const QByteArray text = file.readAll();
    QVERIFY2(text.startsWith("design\ta") && text.contains("\r\nwide\t0.30000000000000004"), text);
    QVERIFY(!page->exportTo(folder.filePath("none/back.csv")));
    FHistory::instance()->undo();
    QVERIFY(!FObjectManager::instance()->find("slim"));
}

void TestWindow::designVariables()
{
    script("parameter h(1); parameter w(h*2); design d1();");
    const auto design = std::dynamic_pointer_cast<FDesign>(FObjectManager::instance()->find("d1"));
    const auto h = std::dynamic_pointer_cast<FParameter>(FObjectManager::instance()->find("h"));
    select({design});
    auto *value = field("h");
    QVERIFY(value);
    QVERIFY(!field("w"));
    QCOMPARE(value->placeholderText(), QStringLiteral("1 (baseline)"));
    value->setFocus();
    QTest::keyClicks(value, "5");
    QTest::keyClick(value, Qt::Key_Return);
    QVERIFY(design->valueOf(h.get()));
    value->selectAll();
    QTest::keyClick(value, Qt::Key_Delete);
    QTest::keyClick(value, Qt::Key_Return);
    QVERIFY(!design->valueOf(h.get()));
}

void TestWindow::finderFindsActionsAndObjects()
{
    toy("spindle");
    QCoreApplication::processEvents();
    auto *finder = mWindow->findChild<FFinder *>("finder");
    QTest::keyClick(mWindow, Qt::Key_K, Qt::ControlModifier);
    QVERIFY(finder->hasFocus());
    QTest::keyClicks(finder, "spind");
    QTest::keyClick(finder, Qt::Key_Return);
    QCoreApplication::processEvents();
    QCOMPARE(FSelectionSet::instance()->getObjects().size(), size_t(1));
    QTest::keyClick(mWindow, Qt::Key_K, Qt::ControlModifier);
    QTest::keyClicks(finder, "insert");
    QTest::keyClick(finder, Qt::Key_Escape);
    QVERIFY(!finder->hasFocus());
    QTest::keyClick(mWindow, Qt::Key_K, Qt::ControlModifier);
    QTest::keyClicks(finder, "parameter");
    QTest::keyClick(finder, Qt::Key_Return);
    QVERIFY(FObjectManager::instance()->find("parameter1"));
}

void TestWindow::menuEntryOfTheRegistry()
{
    const auto one = toy("one");
    select({one});
    QTreeView *view = mWindow->modelPanel()->view();
    QTimer::singleShot(0, this, [] {
        auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        QVERIFY(menu);
        QCOMPARE(menu->actions().front()->text(), QStringLiteral("Poke it"));
        menu->actions().front()->trigger();
        menu->close();
    });
    Q_EMIT view->customContextMenuRequested(view->visualRect(view->currentIndex()).center());
    QCOMPARE(one->pokes(), 1);
}

/// Save As by its dialog: as a file, as a folder, and not into a folder of somebody else's.
void TestWindow::savedElsewhereItLivesThere()
{
    FProjectControl *project = FProjectControl::instance();
    FHistory::instance()->markClean();
    QVERIFY(project->newProject());
    const auto saveAs = [&](const QString &name, int filter) {
        QTimer::singleShot(0, [&] {
            auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            QTest::qWait(100); // the list selects the old name when it is there
            dialog->selectNameFilter(dialog->nameFilters()[filter]);
            Q_EMIT dialog->filterSelected(dialog->nameFilters()[filter]);
            dialog->findChild<QLineEdit *>("fileNameEdit")->setText(name);
            QTest::keyClick(dialog->findChild<QLineEdit *>("fileNameEdit"), Qt::Key_Return);
            if (dialog->isVisible())
                dialog->reject();
        });
        return project->saveAs();
    };
    toy("one");
    QVERIFY(saveAs(mFolder.path() + "/first", 0));
    QCOMPARE(FProject::instance()->path(), mFolder.path() + "/first.tbk");
    QVERIFY(!project->isModified());
    QCoreApplication::processEvents();
    QVERIFY2(mWindow->windowTitle().startsWith("first.tbk"), qPrintable(mWindow->windowTitle()));
    toy("two");
    QVERIFY(project->isModified() && project->save() && !project->isModified());
    QVERIFY(saveAs(mFolder.path() + "/second", 2));
    QCOMPARE(FProject::instance()->path(), mFolder.path() + "/second/project.tbk");
    QCOMPARE(project->name(), QStringLiteral("second"));
    QVERIFY(project->open(mFolder.path() + "/second") && !project->isModified());
    QVERIFY(FObjectManager::instance()->find("two"));
    QVERIFY(QDir().mkpath(mFolder.path() + "/others/thing"));
    QString warned;
    FIO::instance()->setBackend([&](QWidget *, const FIO::Request &request) {
        warned = Q(request.text);
        return 0;
    });
    QVERIFY(!saveAs(mFolder.path() + "/others.tbk", 2));
    FIO::instance()->setBackend(nullptr);
    QVERIFY2(warned.contains("other files"), qPrintable(warned));
    QVERIFY(!QFileInfo::exists(mFolder.path() + "/others/project.tbk"));
    QCOMPARE(project->name(), QStringLiteral("second"));
}

void TestWindow::projectIsAskedFor()
{
    FProjectControl *project = FProjectControl::instance();
    const QString path = mFolder.path() + "/a.tbk";
    QString why;
    QVERIFY(FProject::instance()->save(path, &why));
    FProject::instance()->setPath(path);
    toy("one");
    QVERIFY(project->isModified());
    int asked = 0, answer = 2;
    FIO::instance()->setBackend([&](QWidget *, const FIO::Request &request) {
        ++asked;
        return request.title == "Unsaved changes" ? answer : 0;
    });
    QVERIFY(!project->newProject()); // thought better of it
    QVERIFY(FObjectManager::instance()->find("one"));
    answer = 0;
    QVERIFY(project->newProject());
    QCOMPARE(asked, 2);
    QVERIFY(!FObjectManager::instance()->find("one"));
    QVERIFY(project->open(path));
    QVERIFY(FObjectManager::instance()->find("one"));
    QVERIFY(!project->isModified());
    QCoreApplication::processEvents();
    QVERIFY(mWindow->windowTitle().startsWith("a.tbk"));
    QCOMPARE(FProjectControl::recent().value(0), path);
    // What isn't read whole can't be saved over its file.
    QFile broken(mFolder.path() + "/b.tbk");
    QVERIFY(broken.open(QIODevice::WriteOnly));
    broken.write("toy t();\nnonsense;\n");
    broken.close();
    QVERIFY(!project->open(broken.fileName()));
    QVERIFY(!project->whyNotSaved().isEmpty());
    QVERIFY(!project->save());
}

void TestWindow::copyAndPaste()
{
    const auto one = toy("one");
    one->setSize(4);
    select({one});
    FActions::instance()->refresh();
    FActions::instance()->action("editCopy")->trigger();
    FActions::instance()->refresh();
    QVERIFY(FActions::instance()->action("editPaste")->isEnabled());
    const size_t steps = FHistory::instance()->stepCount();
    FActions::instance()->action("editPaste")->trigger();
    const auto copy = std::dynamic_pointer_cast<FToy>(FObjectManager::instance()->find("one1"));
    QVERIFY(copy);
    QCOMPARE(copy->getSize(), 4.0);
    QCOMPARE(FHistory::instance()->stepCount(), steps + 1);
    // A copy is data: whatever else stands on the clipboard changes and runs nothing, and of a copy
    // that can't be taken whole nothing is taken.
    const QString before = FProject::instance()->text();
    const auto paste = [](const QByteArray &bytes) {
        auto *data = new QMimeData;
        data->setData("application/x-turnbuckle-copy", bytes);
        QGuiApplication::clipboard()->setMimeData(data);
        FActions::instance()->action("editPaste")->trigger();
    };
    for (const char *text :
         {"toy two() {} one.setSize(9);", "one.destroy();", "undo();", "toy two() {} two.setSize(;",
          "toy two() {} select([one]);", "design d() { .setValue(\"none\",1); }"}) {
        QByteArray bytes;
        QDataStream stream(&bytes, QIODevice::WriteOnly);
        stream << QString() << QByteArray(text);
        paste(bytes);
        QCOMPARE(FProject::instance()->text(), before);
        paste(bytes.left(bytes.size() - 3));
        QCOMPARE(FProject::instance()->text(), before);
    }
    QByteArray unknown;
    QDataStream stream(&unknown, QIODevice::WriteOnly);
    stream << QString("FToy") << QByteArray("x") << QString("FNone") << QByteArray("x");
    paste(unknown);
    QCOMPARE(FProject::instance()->text(), before);
    QCOMPARE(FHistory::instance()->stepCount(), steps + 1);
}

void TestWindow::settingsCount()
{
    const size_t before = FHistory::instance()->limit();
    FSettingsDialog dialog;
    dialog.findChild<QSpinBox *>("historyLimit")->setValue(64);
    QCOMPARE(FHistory::instance()->limit(), size_t(64) << 20);
    FHistory::instance()->setLimit(before);
    FSettingsDialog::applyHistoryLimit(); // as the next start does
    QCOMPARE(FHistory::instance()->limit(), size_t(64) << 20);
    FHistory::instance()->setLimit(before);
}

/// Each action has a text and a tip, and no shortcut or mnemonic means two things.
void TestWindow::actionsAreSound()
{
    QMap<QString, QString> shortcuts;
    for (const FActionInfo &info : FActions::instance()->all()) {
        QVERIFY2(!info.text.isEmpty() && !info.toolTip.isEmpty(), qPrintable(info.id));
        const QString keys = info.shortcut.toString();
        QVERIFY2(keys.isEmpty() || !shortcuts.contains(keys) || shortcuts[keys] == info.id,
                 qPrintable(info.id + " and " + shortcuts.value(keys)));
        shortcuts[keys] = info.id;
        QVERIFY2(info.icon.isEmpty() || !FActions::instance()->action(info.id)->icon().isNull(),
                 qPrintable(info.icon));
    }
    for (const QAction *top : mWindow->menuBar()->actions()) {
        QSet<QString> mnemonics;
        for (const QAction *action : top->menu()->actions()) {
            const int at = action->text().indexOf('&');
            if (at < 0)
                continue;
            const QString letter = action->text().mid(at + 1, 1).toLower();
            QVERIFY2(!mnemonics.contains(letter), qPrintable(top->text() + ": " + action->text()));
            mnemonics << letter;
        }
    }
}

/// Contrast, and names for those who can't see.
void TestWindow::looksAreSound()
{
    const auto luminance = [](const QColor &color) {
        const auto part = [](double c) {
            return c <= 0.03928 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * part(color.redF()) + 0.7152 * part(color.greenF()) +
               0.0722 * part(color.blueF());
    };
    const std::pair<const char *, const char *> pairs[] = {{"text", "base"},
                                                           {"text", "window"},
                                                           {"text", "selection"},
                                                           {"muted", "base"},
                                                           {"muted", "window"},
                                                           {"muted", "header"},
                                                           {"accent", "base"},
                                                           {"accent", "window"},
                                                           {"good", "base"},
                                                           {"bad", "base"},
                                                           {"bad", "window"},
                                                           {"warning", "warning-ground"},
                                                           {"warning", "base"},
                                                           {"on-accent", "accent"},
                                                           {"tag", "base"},
                                                           {"tag-name", "base"},
                                                           {"tag-error", "base"},
                                                           {"possible", "possible-ground"},
                                                           {"found", "found-ground"},
                                                           {"anchor", "anchor-ground"},
                                                           {"result-line", "result-line-ground"},
                                                           {"cell", "cell-ground"}};
    for (const bool dark : {false, true})
        for (const auto &[front, back] : pairs) {
            const double a = luminance(FTheme::instance()->colorOf(front, dark)) + 0.05;
            const double b = luminance(FTheme::instance()->colorOf(back, dark)) + 0.05;
            const double contrast = a > b ? a / b : b / a;
            QVERIFY2(contrast >= 4.5, qPrintable(QString("%1 on %2: %3, %4")
                                                     .arg(front, back)
                                                     .arg(contrast)
                                                     .arg(dark ? "dark" : "light")));
        }
    const QStringList faults = faultsOfLooks(mWindow);
    QVERIFY2(faults.isEmpty(), qPrintable(faults.join('\n')));
}

QTEST_MAIN(TestWindow)
#include "tst_window.moc"
