// SPDX-License-Identifier: Apache-2.0
// turnbuckle-pictures FOLDER SUFFIX [PAGE...]: pictures of the window in both themes, with the
// examples and a real solver.
#include "fdesignspage.h"
#include "ffinder.h"
#include "fgenintcommandfileedit.h"
#include "fgenintcommandfileeditor.h"
#include "fruncontrol.h"
#include "fsearchdialog.h"
#include "fsettingsdialog.h"
#include "fsoftconlink.h"
#include "workbench.h"

namespace {
QString gFolder, gSuffix;
QStringList gPages;
QTemporaryDir gTemporary;

bool isWanted(const char *page) { return gPages.isEmpty() || gPages.contains(QLatin1String(page)); }

QString copyOf(const char *example)
{
    static int copies = 0;
    const QString to = QStringLiteral("%1/%2").arg(gTemporary.path()).arg(++copies);
    QDir().mkpath(to);
    const QString name = QStringLiteral("%1.tbk").arg(example);
    QFile::copy(QStringLiteral(F_SOURCE_DIR "/examples/%1/%2").arg(example, name), to + '/' + name);
    return to + '/' + name;
}

void settle()
{
    QTest::qWait(300);
    Workbench::turn();
}

void waitForRuns()
{
    if (!QTest::qWaitFor([] { return FRunControl::instance()->isIdle(); }, 60000))
        qWarning("the runs take too long");
    settle();
}

void take(QWidget *widget, const char *page)
{
    settle();
    const char *theme = FTheme::instance()->isDark() ? "dark" : "light";
    widget->grab().save(QStringLiteral("%1/%2-%3%4.png")
                            .arg(gFolder, QLatin1String(page), QLatin1String(theme), gSuffix));
}

/// The editor of a template, with the button over the number under the mouse.
void takeTemplate(Workbench &bench)
{
    bench.connector()->tabWidget()->setCurrentIndex(1);
    Workbench::turn();
    auto *tab =
        qobject_cast<FGenIntCommandFileEditor *>(bench.connector()->tabWidget()->currentWidget());
    FGenIntCommandFileEdit *edit = tab->edit();
    edit->goTo(edit->document()->find("ELASTIC").blockNumber() + 3);
    Workbench::turn();
    const QTextCursor number = edit->document()->find("0.3", edit->document()->find("ELASTIC"));
    QCursor::setPos(edit->viewport()->mapToGlobal(edit->cursorRect(number).center()));
    take(bench.window(), "template");
    edit->startSearch(true);
    edit->searchDialog()->findChild<QLineEdit *>("searchText")->setText("entry");
    take(bench.window(), "search");
    edit->searchDialog()->hide();
}

/// The editor of a result template, and what a double click on a number offers.
void takeResults(Workbench &bench)
{
    bench.connector()->tabWidget()->setCurrentIndex(2);
    take(bench.window(), "results");
    auto *tab = qobject_cast<FTemplateTab *>(bench.connector()->tabWidget()->currentWidget());
    FEditor *edit = tab->editor();
    const QPoint place = edit->cursorRect(edit->document()->find("E-11")).center();
    QTimer::singleShot(800, tab, [&] {
        const char *theme = FTheme::instance()->isDark() ? "dark" : "light";
        QPixmap picture = bench.window()->grab();
        if (QWidget *menu = QApplication::activePopupWidget()) {
            QPainter painter(&picture);
            // The window of a user is wider.
            QPoint at = bench.window()->mapFromGlobal(menu->pos());
            at.setX(qMin(at.x(), bench.window()->width() - menu->width() - 8));
            painter.drawPixmap(at, menu->grab());
            menu->close();
        }
        picture.save(
            QStringLiteral("%1/rule-%2%3.png").arg(gFolder, QLatin1String(theme), gSuffix));
    });
    QTest::mouseDClick(edit->viewport(), Qt::LeftButton, {}, place);
}

void beamPages()
{
    Workbench bench(copyOf("beam"));
    // A design that fails, and a state of every kind.
    FDispatcher::script("design thin(); thin.setValue(\"height\",0);");
    Workbench::act("runAll");
    waitForRuns();
    bench.window()->showPanel(QStringLiteral("messages"));
    FSelectionSet::instance()->set({FExprBase(bench.computation())}, true);
    if (isWanted("overview"))
        take(bench.window(), "overview");
    if (isWanted("designs")) {
        Workbench::act("viewDesigns");
        take(bench.window(), "designs");
    }
    QTabWidget *documents = bench.window()->documents();
    documents->setCurrentWidget(bench.connector()->widget());
    if (isWanted("template") || isWanted("search"))
        takeTemplate(bench);
    if (isWanted("results") || isWanted("rule"))
        takeResults(bench);
    bench.connector()->gotoOverview();
    if (isWanted("preview")) {
        Workbench::act("runPreview");
        settle();
        take(bench.window()->findChild<QDialog *>("previewDialog"), "preview");
        bench.window()->findChild<QDialog *>("previewDialog")->close();
    }
    if (isWanted("failed")) {
        for (const auto &design : FDesign::all())
            if (design->getName() == "thin")
                FDesign::setCurrent(design);
        take(bench.window(), "failed");
    }
    if (isWanted("problems")) {
        FDispatcher::script("beam.setApplication(\"no_such_program\");");
        Workbench::act("runCheck");
        take(bench.window(), "problems");
    }
    if (isWanted("script")) {
        bench.window()->showPanel(QStringLiteral("script"));
        take(bench.window(), "script");
    }
}

void manyItems()
{
    Workbench bench;
    const QString folder = gTemporary.path() + "/many";
    QDir().mkpath(folder);
    QStringList files;
    for (int i = 0; i < 40; ++i) {
        const QString path = QStringLiteral("%1/%2%3.%4")
                                 .arg(folder, i % 7 ? "part" : "a_part_with_a_very_long_name_")
                                 .arg(i)
                                 .arg(i % 3 ? "msh" : "k");
        QFile file(path);
        if (file.open(QIODevice::WriteOnly))
            file.write("x 1\n");
        files << path;
    }
    bench.dropFiles(files, SoftConInput);
    bench.dropFiles(files.mid(0, 9), SoftConOutput);
    bench.dropFiles(files.mid(0, 5), SoftConImport);
    bench.scene()->addExport();
    for (const char *size : {"Medium", "Small", "Large"}) {
        bench.connector()->setItemSizeStr(QLatin1String(size));
        bench.scene()->calcItemRatios();
        bench.scene()->redraw();
        take(bench.window(), (std::string("many-") + size).c_str());
    }
    bench.connector()->setItemSizeStr(QStringLiteral("Medium"));
}

/// What flows between couplings, with a run that failed.
void takeGraph()
{
    Workbench bench(copyOf("chain"));
    Workbench::act("runAll");
    waitForRuns();
    FDispatcher::script("block.setApplication(\"no_such_program\");");
    Workbench::act("runCurrent");
    waitForRuns();
    FSelectionSet::instance()->set({FExprBase(FObjectManager::instance()->find("block"))}, true);
    Workbench::act("viewChain");
    take(bench.window(), "graph");
}

/// The files of other couplings that one can take.
void takeLink()
{
    Workbench bench(copyOf("chain"));
    for (const char *name : {"discharge", "block"})
        FDispatcher::execute(FExprBase(FObjectManager::instance()->find(name)),
                             "openSoftwareConnector");
    Workbench::turn();
    FSoftConConnectConnectorDialog dialog(
        bench.window(),
        FSoftwareConnector::of(FObjectManager::instance()->find("discharge").get()));
    dialog.show();
    auto *tree = dialog.findChild<QTreeWidget *>();
    tree->setCurrentItem(tree->topLevelItem(0)->child(0));
    take(&dialog, "link");
}

void pages()
{
    if (isWanted("welcome")) {
        Workbench bench;
        FHistory::instance()->markClean();
        FProjectControl::instance()->close();
        take(bench.window(), "welcome");
    }
    if (isWanted("empty")) {
        Workbench bench;
        take(bench.window(), "empty");
    }
    if (isWanted("settings")) {
        Workbench bench;
        FSettingsDialog dialog;
        dialog.show();
        take(&dialog, "settings");
    }
    beamPages();
    if (isWanted("chain")) {
        Workbench bench(copyOf("chain"));
        Workbench::act("runAll");
        waitForRuns();
        take(bench.window(), "chain");
    }
    if (isWanted("graph"))
        takeGraph();
    if (isWanted("link"))
        takeLink();
    if (isWanted("many"))
        manyItems();
}
} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() < 3) {
        qWarning("turnbuckle-pictures FOLDER SUFFIX [PAGE...]");
        return 2;
    }
    gFolder = arguments[1];
    gSuffix = arguments[2];
    gPages = arguments.mid(3);
    QDir().mkpath(gFolder);
    Workbench::once(gTemporary.path());
    for (const auto theme : {FTheme::Choice::Light, FTheme::Choice::Dark}) {
        FTheme::instance()->setChoice(theme);
        pages();
    }
    return 0;
}
