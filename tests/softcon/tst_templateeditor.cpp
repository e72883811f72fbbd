// SPDX-License-Identifier: Apache-2.0
// The editor of an input template: entries by the mouse, typing, search, undo.
#include "fgenintcommandfilebuttons.h"
#include "fgenintcommandfileedit.h"
#include "fgenintcommandfileeditor.h"
#include "fgenintentrylist.h"
#include "fsearchdialog.h"
#include "testseed.h"
#include "workbench.h"

class TestTemplateEditor : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { Workbench::once(mFolder.path()); }
    void init();
    void cleanup();
    void entryByOneClick();
    void menuOfATag();
    void entryFromTheSelection();
    void namesThatAreProposed();
    void typingIsOneStep();
    void linesAndIndentation();
    void searchAndReplace();
    void coloursFollowTheEntries();
    void plainModeKeepsWhatItHad();
    void completionAndList();
    void changedOnDisk();
    void randomUse();

private:
    FGenIntCommandFileEdit *edit() const { return mEditor->edit(); }
    QString text() const { return mFile->text(); }
    QPoint placeOf(const QString &piece, int offset = 0) const
    {
        QTextCursor cursor = edit()->document()->find(piece);
        if (cursor.isNull())
            return QPoint();
        cursor.setPosition(cursor.selectionStart() + offset);
        return edit()->cursorRect(cursor).center();
    }
    void hover(const QString &piece, int offset = 1)
    {
        const QPoint place = placeOf(piece, offset);
        QVERIFY(!place.isNull());
        QTest::mouseMove(edit()->viewport(), place);
        QCursor::setPos(edit()->viewport()->mapToGlobal(place));
        QTest::qWait(1);
        edit()->viewport()->repaint();
    }
    /// Chooses an item of the menu that opens next; "A/B" of a submenu.
    void chooseInMenu(const QString &path)
    {
        QTimer::singleShot(
            50, this,
            [path] {
                auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
                QVERIFY(menu);
                const QStringList titles = path.split('/');
                QMenu *level = menu;
                for (const QString &title : titles)
                    for (QAction *action : level->actions())
                        if (action->text() == title) {
                            if (action->menu())
                                level = action->menu();
                            else
                                action->trigger();
                        }
                menu->close();
            });
    }
    std::unique_ptr<Workbench> mBench;
    std::shared_ptr<FGenIntCommandFile> mFile;
    FGenIntCommandFileEditor *mEditor = nullptr;
    QTemporaryDir mFolder;
};

void TestTemplateEditor::init()
{
    mBench = std::make_unique<Workbench>();
    const QString path = mFolder.path() + "/in.dat";
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("title of the run\nlength = 1.50\n\twidth: 2\n  3, 4\n<a name=\"len\">2.5</a>\n");
    file.close();
    mBench->connector()->addInputTemplateFromString(
        "title of the run\nlength = 1.50\n\twidth: 2\n  3, 4\n<a name=\"len\">2.5</a>\n", "in.dat");
    Workbench::turn();
    mFile = mBench->definition()->getFiles(0).front().ptr<FGenIntCommandFile>();
    QVERIFY(mFile);
    mBench->connector()->gotoTab(FExpr<FGenIntFile>(std::static_pointer_cast<FGenIntFile>(mFile)));
    Workbench::turn();
    mEditor =
        qobject_cast<FGenIntCommandFileEditor *>(mBench->connector()->tabWidget()->currentWidget());
    QVERIFY(mEditor && edit()->isVisible());
    edit()->setFocus();
    Workbench::turn();
}

void TestTemplateEditor::cleanup()
{
    mFile.reset();
    mBench.reset();
}

void TestTemplateEditor::entryByOneClick()
{
    const QString before = text();
    const size_t steps = FHistory::instance()->stepCount();
    hover("length = 1.50");
    QVERIFY(edit()->addButton()->isVisible());
    QCOMPARE(edit()->addButton()->text(), QStringLiteral("length = 1.50"));
    QTest::mouseClick(edit()->addButton(), Qt::LeftButton);
    QCOMPARE(text(), QString(before).replace("1.50", "<entry>length</entry>"));
    QCOMPARE(FHistory::instance()->stepCount(), steps + 1);
    const auto entry = mBench->definition()->rootEntry("length");
    QVERIFY(entry);
    QCOMPARE(entry->getDefaultValue().getPtr()->toPlainString(), std::string("1.5"));
    // What stands in the middle of markup is named by its attribute.
    hover("2.5");
    QVERIFY(edit()->addButton()->isVisible());
    QTest::mouseClick(edit()->addButton(), Qt::LeftButton);
    QVERIFY(text().contains("<a name=\"len\"><entry>len</entry></a>"));
    Workbench::act("editUndo");
    Workbench::act("editUndo");
    QCOMPARE(text(), before);
    QCOMPARE(edit()->toPlainText(), before);
    QVERIFY(!mBench->definition()->rootEntry("length"));
    Workbench::act("editRedo");
    QVERIFY(edit()->toPlainText().contains("<entry>length</entry>"));
    // At the caret, by key.
    QTextCursor cursor = edit()->document()->find("3, 4");
    cursor.setPosition(cursor.selectionStart() + 1);
    edit()->setTextCursor(cursor);
    QTest::keyClick(edit(), Qt::Key_E, Qt::ControlModifier);
    QVERIFY(text().contains("  <entry>newEntry</entry>, 4"));
}

void TestTemplateEditor::menuOfATag()
{
    hover("length = 1.50");
    QTest::mouseClick(edit()->addButton(), Qt::LeftButton);
    hover("width: 2");
    QTest::mouseClick(edit()->addButton(), Qt::LeftButton);
    Workbench::turn();
    hover("<entry>length");
    QVERIFY(edit()->editButton()->isVisible());
    QCOMPARE(edit()->editButton()->entryName(), QStringLiteral("length"));
    // Rename, in place; what the validator refuses can't be typed.
    chooseInMenu("Rename");
    QTest::mouseClick(edit()->editButton(), Qt::LeftButton);
    QVERIFY(edit()->nameField()->isVisible());
    QTest::keyClicks(edit()->nameField(), "l en|gth2");
    QTest::keyClick(edit()->nameField(), Qt::Key_Return);
    Workbench::turn();
    QVERIFY(!edit()->nameField()->isVisible());
    QVERIFY2(text().contains("<entry>length2</entry>"), qPrintable(text()));
    QVERIFY(mBench->definition()->rootEntry("length2"));
    // Replace by the other one: the entry stays, for the stored text still names it.
    hover("<entry>length2");
    chooseInMenu("Replace/width");
    QTest::mouseClick(edit()->editButton(), Qt::LeftButton);
    mEditor->commit();
    QVERIFY(text().contains("length = <entry>width</entry>"));
    QVERIFY(mBench->definition()->rootEntry("length2"));
    // Remove leaves the plain value.
    hover("<entry>width");
    chooseInMenu("Remove");
    QTest::mouseClick(edit()->editButton(), Qt::LeftButton);
    mEditor->commit();
    QVERIFY2(text().contains("length = 2\n"), qPrintable(text()));
    hover("<entry>width");
    chooseInMenu("Delete (from all files)");
    QTest::mouseClick(edit()->editButton(), Qt::LeftButton);
    Workbench::turn();
    QVERIFY(!text().contains("width</entry>"));
    QVERIFY(!mBench->definition()->rootEntry("width"));
    QCOMPARE(edit()->toPlainText(), text());
}

void TestTemplateEditor::entryFromTheSelection()
{
    edit()->setTextCursor(edit()->document()->find("of the"));
    chooseInMenu("New Entry");
    QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(5, 5),
                            edit()->mapToGlobal(QPoint(5, 5)));
    QCoreApplication::sendEvent(edit()->viewport(), &event);
    const auto all = mBench->definition()->getRootEntries();
    const auto entry = mBench->definition()->rootEntry("title_of_the_run");
    QVERIFY(entry);
    QCOMPARE(entry->getDefaultValue().getPtr()->toPlainString(), std::string("of the"));
    QVERIFY(text().startsWith("title <entry>title_of_the_run</entry> run\n"));
    // Without a selection, at the caret, an empty text under the name of a line that starts with a
    // digit.
    QTextCursor end(edit()->document());
    end.movePosition(QTextCursor::End);
    end.insertText("7 apples");
    end.movePosition(QTextCursor::End);
    edit()->setTextCursor(end);
    edit()->addEntryViaContextMenu();
    QVERIFY2(text().endsWith("7 apples<entry>newEntry</entry>"), qPrintable(text()));
    // The tag of a known entry.
    chooseInMenu("Entries/newEntry");
    QCoreApplication::sendEvent(edit()->viewport(), &event);
    mEditor->commit();
    QVERIFY(text().endsWith("<entry>newEntry</entry><entry>newEntry</entry>"));
}

void TestTemplateEditor::namesThatAreProposed()
{
    const QString letters = QString(50, 'a');
    const QStringList lines{letters, "aaaaaaaa bbbbbbbb cccccccc dddddddd eeeeeeee ffff",
                            "  a  -- b = 3", "5 x", "_"};
    const QStringList names{letters.left(40), "aaaaaaaa_bbbbbbbb_cccccccc_dddddddd", "a_b",
                            "newEntry", "newEntry_1"};
    for (int i = 0; i < lines.size(); ++i) {
        edit()->selectAll();
        edit()->textCursor().insertText(lines[i]);
        edit()->moveCursor(QTextCursor::End);
        edit()->addEntryViaContextMenu();
        const QString made = text().section("<entry>", -1).section("</entry>", 0, 0);
        if (i < 4)
            QCOMPARE(made, names[i]);
        else
            QVERIFY(made.startsWith("newEntry"));
    }
}

void TestTemplateEditor::typingIsOneStep()
{
    const QString before = text();
    const size_t steps = FHistory::instance()->stepCount();
    edit()->moveCursor(QTextCursor::Start);
    QTest::keyClicks(edit(), "abc ");
    QCOMPARE(text(), before); // not at each key
    QTRY_COMPARE_WITH_TIMEOUT(text(), "abc " + before, 3000);
    QCOMPARE(FHistory::instance()->stepCount(), steps + 1);
    // An action takes what was typed along, whoever triggers it.
    QTest::keyClicks(edit(), "xyz");
    FActions::instance()->action("editUndo")->trigger();
    Workbench::turn();
    QCOMPARE(text(), "abc " + before);
    QCOMPARE(edit()->toPlainText(), text());
    Workbench::act("editRedo");
    QCOMPARE(text(), "abc xyz" + before);
    // Line ends and odd letters stay where nobody typed.
    mFile->setContent(QString::fromUtf8("a\r\nb\u00a0c\r\nd\n"));
    Workbench::turn();
    edit()->moveCursor(QTextCursor::End);
    QTest::keyClicks(edit(), "e");
    mEditor->commit();
    QCOMPARE(text(), QString::fromUtf8("a\r\nb\u00a0c\r\nd\ne"));
}

void TestTemplateEditor::linesAndIndentation()
{
    edit()->selectAll();
    edit()->textCursor().insertText("  \t x\n   \n");
    edit()->moveCursor(QTextCursor::Start);
    edit()->moveCursor(QTextCursor::EndOfLine);
    QTest::keyClick(edit(), Qt::Key_Return);
    QCOMPARE(edit()->document()->findBlockByNumber(1).text(), QStringLiteral("  \t"));
    edit()->moveCursor(QTextCursor::Down);
    edit()->moveCursor(QTextCursor::EndOfLine);
    QTest::keyClick(edit(), Qt::Key_Enter, Qt::KeypadModifier);
    QCOMPARE(edit()->document()->findBlockByNumber(3).text(), QStringLiteral("   "));
    // Lines by the numbers beside them, downward and back up.
    edit()->setPlainText("one\ntwo\nthree\nfour");
    QWidget *numbers = edit()->findChild<QWidget *>("lineNumbers");
    const auto yOf = [this](int line) {
        return edit()
            ->cursorRect(QTextCursor(edit()->document()->findBlockByNumber(line)))
            .center()
            .y();
    };
    QTest::mousePress(numbers, Qt::LeftButton, {}, QPoint(5, yOf(1)));
    QCOMPARE(edit()->textCursor().selectedText(), QStringLiteral("two") + QChar(0x2029));
    const auto drag = [&](int line) {
        QMouseEvent move(QEvent::MouseMove, QPointF(5, yOf(line)), Qt::LeftButton, Qt::LeftButton,
                         {});
        QCoreApplication::sendEvent(numbers, &move);
    };
    drag(2);
    QCOMPARE(edit()->textCursor().selectedText().size(), 10);
    drag(0);
    QCOMPARE(edit()->textCursor().selectionStart(), 0);
    QCOMPARE(edit()->textCursor().selectionEnd(), 8);
    QTest::mouseRelease(numbers, Qt::LeftButton, {}, QPoint(5, yOf(0)));
    const int margin = edit()->lineNumberAreaWidth();
    edit()->toggleLineNumbers();
    QVERIFY(edit()->lineNumberAreaWidth() < margin);
}

void TestTemplateEditor::searchAndReplace()
{
    edit()->selectAll();
    edit()->textCursor().insertText("load 1\nLoad 2\nreload 3\nload 4\n");
    edit()->moveCursor(QTextCursor::Start);
    QTest::keyClick(edit(), Qt::Key_F, Qt::ControlModifier);
    auto *bar = edit()->searchDialog();
    QVERIFY(bar->isVisible());
    auto *find = bar->findChild<QLineEdit *>("searchText");
    QTest::keyClicks(find, "load");
    QTest::keyClick(find, Qt::Key_Return);
    QCOMPARE(edit()->textCursor().selectionStart(), 0);
    QTest::keyClick(find, Qt::Key_Return);
    QCOMPARE(edit()->textCursor().selectionStart(), 7);
    QTest::mouseClick(bar->findChild<QToolButton *>("searchCase"), Qt::LeftButton);
    QTest::mouseClick(bar->findChild<QToolButton *>("searchWord"), Qt::LeftButton);
    QTest::keyClick(edit(), Qt::Key_F3);
    QCOMPARE(edit()->textCursor().block().blockNumber(), 3);
    QTest::keyClick(edit(), Qt::Key_F3, Qt::ShiftModifier);
    QCOMPARE(edit()->textCursor().block().blockNumber(), 0);
    // A hit is marked over the colours.
    edit()->viewport()->repaint();
    bool isMarked = false;
    for (const auto &range : edit()->document()->firstBlock().layout()->formats())
        isMarked = isMarked ||
                   (range.start == 0 && range.length == 4 &&
                    range.format.background().color() == FCmdLineSyntaxHighlighter::sCustomColor);
    QVERIFY(isMarked);
    QTest::keyClick(edit(), Qt::Key_H, Qt::ControlModifier);
    find->setText("(\\w+) (\\d)");
    bar->findChild<QToolButton *>("searchRegular")->setChecked(true);
    bar->findChild<QLineEdit *>("replaceText")->setText("\\2 \\1");
    QTest::mouseClick(bar->findChild<QPushButton *>("replaceAll"), Qt::LeftButton);
    QCOMPARE(edit()->toPlainText(), QStringLiteral("1 load\n2 Load\n3 reload\n4 load\n"));
    find->setText("(");
    QVERIFY(find->property("wrong").toBool());
    QTest::keyClick(find, Qt::Key_Escape);
    QVERIFY(!bar->isVisible() && edit()->hasFocus());
    mEditor->commit();
    Workbench::act("editUndo");
    QCOMPARE(edit()->toPlainText(), QStringLiteral("load 1\nLoad 2\nreload 3\nload 4\n"));
}

void TestTemplateEditor::coloursFollowTheEntries()
{
    const auto colourOf = [this](const QString &piece) {
        edit()->viewport()->repaint();
        const QTextCursor at = edit()->document()->find(piece);
        const QTextBlock block = edit()->document()->findBlock(at.selectionStart());
        const int place = at.selectionStart() - block.position();
        for (const auto &range : block.layout()->formats())
            if (range.start <= place && place < range.start + range.length)
                return range.format.foreground().color();
        return QColor();
    };
    using Colours = FGenIntCommandFileSyntaxHighlighter;
    edit()->moveCursor(QTextCursor::Start);
    edit()->insertPlainText("<entry>Stiff</entry>\n");
    mEditor->commit();
    Workbench::turn();
    QCOMPARE(colourOf("Stiff"), Colours::sValueErrorForeground);
    QCOMPARE(colourOf("<entry>Stiff"), Colours::sTagForeground);
    const auto entry = FEntryDef::create("stiff", mBench->definition(), 1, 1, false, true, "",
                                         FExprBase(f_make_shared<FDouble>(1.0)));
    Workbench::turn();
    QCOMPARE(colourOf("Stiff"), Colours::sValueForeground); // another case is the same name
    entry->setName("other");
    Workbench::turn();
    QCOMPARE(colourOf("other"), Colours::sValueForeground);
    FTheme::instance()->setChoice(FTheme::Choice::Dark);
    Workbench::turn();
    QCOMPARE(mEditor->property("highlight_color_TagForeground").value<QColor>(),
             FTheme::color("tag"));
    QCOMPARE(colourOf("<entry>other"), FTheme::color("tag"));
    FTheme::instance()->setChoice(FTheme::Choice::Light);
    QCOMPARE(Colours::sTagForeground, QColor(Qt::blue));
    QCOMPARE(Colours::sPossibleValueBackground, QColor(207, 246, 207));
    // The map beside the scroll bar knows the tag, and a faulty mark.
    edit()->moveCursor(QTextCursor::End);
    edit()->insertPlainText("<entry>");
    mEditor->commit();
    QCOMPARE(edit()->lineMarks().size(), 2);
    QCOMPARE(QByteArray(edit()->lineMarks().last().role), QByteArray("bad"));
}

void TestTemplateEditor::plainModeKeepsWhatItHad()
{
    auto *mode = mEditor->findChild<QToolButton *>("templateMode");
    edit()->viewport()->repaint();
    const QTextBlock line = edit()->document()->findBlockByNumber(1);
    const auto *table = line.userData();
    QVERIFY(table);
    const auto formats = line.layout()->formats();
    QTest::mouseClick(mode, Qt::LeftButton);
    QVERIFY(edit()->isWriteModeActivated());
    hover("length = 1.50");
    QVERIFY(!edit()->addButton()->isVisible());
    QVERIFY(line.userData() == table && line.layout()->formats() == formats);
    edit()->setTextCursor(QTextCursor(line));
    QTest::keyClicks(edit(), "xx");
    edit()->viewport()->repaint();
    QVERIFY(line.layout()->formats() != formats);
    // Back in assisted mode a click acts on what stands there now.
    QTest::mouseClick(mode, Qt::LeftButton);
    hover("xxlength = 1.50");
    QCOMPARE(edit()->addButton()->text(), QStringLiteral("xxlength = 1.50"));
    QTest::mouseClick(edit()->addButton(), Qt::LeftButton);
    QVERIFY(text().contains("\nxxlength = <entry>xxlength</entry>\n"));
}

void TestTemplateEditor::completionAndList()
{
    hover("length = 1.50");
    QTest::mouseClick(edit()->addButton(), Qt::LeftButton);
    hover("width: 2");
    QTest::mouseClick(edit()->addButton(), Qt::LeftButton);
    edit()->moveCursor(QTextCursor::End);
    QTest::keyClicks(edit(), "<entry>wi");
    auto *names = edit()->findChild<QAbstractItemView *>("entryNames");
    if (!names)
        for (QWidget *one : QApplication::topLevelWidgets())
            if (one->objectName() == QLatin1String("entryNames"))
                names = qobject_cast<QAbstractItemView *>(one);
    QVERIFY(names && names->isVisible());
    QTest::keyClick(names, Qt::Key_Return);
    QVERIFY2(edit()->toPlainText().endsWith("<entry>width</entry>"),
             qPrintable(edit()->toPlainText()));
    mEditor->commit();
    auto *list = mEditor->findChild<FGenIntEntryList *>("entryList");
    QTRY_COMPARE(list->topLevelItemCount(), 2);
    QTRY_COMPARE(list->topLevelItem(1)->text(2), QStringLiteral("2"));
    // A click walks through the places.
    Q_EMIT list->itemClicked(list->topLevelItem(1), 0);
    const int first = edit()->textCursor().selectionStart();
    QCOMPARE(edit()->textCursor().selectedText(), QStringLiteral("<entry>width</entry>"));
    Q_EMIT list->itemClicked(list->topLevelItem(1), 0);
    QVERIFY(edit()->textCursor().selectionStart() != first);
    Q_EMIT list->itemClicked(list->topLevelItem(1), 0);
    QCOMPARE(edit()->textCursor().selectionStart(), first);
}

void TestTemplateEditor::changedOnDisk()
{
    const QString path = mFolder.path() + "/in.dat";
    mFile->initFromFile(path);
    Workbench::turn();
    hover("length = 1.50");
    QTest::mouseClick(edit()->addButton(), Qt::LeftButton);
    auto *notice = mEditor->findChild<QWidget *>("sourceNotice");
    QVERIFY(!notice->isVisible());
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QByteArray bytes = file.readAll();
    file.close();
    bytes.replace("length = 1.50", "length = 9.75").append("one more line\n");
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    file.close();
    Q_EMIT qApp->applicationStateChanged(Qt::ApplicationActive);
    QVERIFY(notice->isVisible());
    QTimer::singleShot(50, this, [] {
        auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
        QVERIFY(dialog);
        QCOMPARE(dialog->findChild<FEditor *>("difference")->toPlainText().count('+'), 1);
        dialog->close();
    });
    QTest::mouseClick(notice->findChild<QPushButton *>("sourceDifference"), Qt::LeftButton);
    const size_t steps = FHistory::instance()->stepCount();
    QTest::mouseClick(notice->findChild<QPushButton *>("sourceTake"), Qt::LeftButton);
    QCOMPARE(FHistory::instance()->stepCount(), steps + 1);
    QVERIFY(!notice->isVisible());
    QVERIFY(text().contains("length = <entry>length</entry>\n") &&
            text().endsWith("one more line\n"));
    QCOMPARE(edit()->toPlainText(), text());
    Workbench::act("editUndo");
    QVERIFY(!text().contains("one more"));
    mEditor->hide();
    mEditor->show();
    QVERIFY(notice->isVisible());
    QTest::mouseClick(notice->findChild<QPushButton *>("sourceIgnore"), Qt::LeftButton);
    QVERIFY(!notice->isVisible() && !text().contains("one more"));
    // What is known of the file is saved, by a path beside the project.
    QString why;
    QVERIFY(FProject::instance()->save(mFolder.path() + "/source.tbk", &why));
    QFile saved(mFolder.path() + "/source.tbk");
    QVERIFY(saved.open(QIODevice::ReadOnly) && saved.readAll().contains("  in.dat\")"));
}

/// Whatever is done, window and model are the same at the end, and undo leads back.
void TestTemplateEditor::randomUse()
{
    std::mt19937 random(testSeed());
    const size_t steps = FHistory::instance()->stepCount();
    const QString before = text();
    for (int i = 0; i < 250; ++i) {
        const int length = edit()->document()->characterCount();
        QTextCursor cursor = edit()->textCursor();
        cursor.setPosition(int(random() % unsigned(length)));
        if (random() % 3 == 0)
            cursor.setPosition(qMin(length - 1, cursor.position() + int(random() % 9)),
                               QTextCursor::KeepAnchor);
        edit()->setTextCursor(cursor);
        edit()->viewport()->repaint();
        switch (random() % 8) {
        case 0:
            QTest::keyClicks(edit(), "k = 12 ");
            break;
        case 1:
            QTest::keyClick(edit(), Qt::Key_Backspace);
            break;
        case 2:
            QTest::keyClick(edit(), Qt::Key_Return);
            break;
        case 3: {
            QTextCursor hit = edit()->document()->find(QRegExp("\\d"), cursor.position());
            if (hit.isNull())
                break;
            const QPoint place = edit()->cursorRect(hit).center();
            QCursor::setPos(edit()->viewport()->mapToGlobal(place));
            edit()->viewport()->repaint();
            if (edit()->addButton()->isVisible())
                QTest::mouseClick(edit()->addButton(), Qt::LeftButton);
            break;
        }
        case 4:
            edit()->addEntryViaContextMenu();
            break;
        case 5:
            mEditor->commit();
            if (FHistory::instance()->stepCount() > steps) // not the template itself
                Workbench::act("editUndo");
            break;
        case 6:
            Workbench::act("editRedo");
            break;
        default:
            mEditor->commit();
        }
    }
    mEditor->commit();
    Workbench::turn();
    QCOMPARE(edit()->toPlainText(), text());
    while (FHistory::instance()->stepCount() > steps)
        Workbench::act("editUndo");
    QCOMPARE(text(), before);
    QCOMPARE(edit()->toPlainText(), before);
}

QTEST_MAIN(TestTemplateEditor)
#include "tst_templateeditor.moc"
