#include "overlay_input.h"
#include "support/test_main.h"
#include "ui/tool_tips.h"
#include "ui/toolbar_config_dialog.h"
#include "ui/toolbar_layout_editor.h"

#include <QApplication>
#include <QSignalSpy>

using namespace tavrel;
using namespace tavrel::ui;

namespace {

QString words(const ToolbarLayout &layout, bool visible)
{
    QStringList words;
    for (const ToolbarItem &item : layout) {
        if (item.visible == visible)
            words.append(toolTypeName(item.tool));
    }
    return words.join(u' ');
}

constexpr auto kVisible = "rect arrow pen marker eraser mosaic text sequence ocr record long_screenshot";
constexpr auto kHidden = "smart_erase spotlight magnifier watermark";

} // namespace

class ToolbarConfigTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_ground = std::make_unique<Ground>();
        m_ground->setFocusPolicy(Qt::StrongFocus);
        m_ground->setMouseTracking(true);
        m_ground->resize(900, 700);
        m_dialog = new ToolbarConfigDialog(m_ground.get());
        m_editor = m_dialog->editor();
        m_ground->show();
        m_ground->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_ground.get()));
        m_ground->setFocus();
        m_dialog->open(lightTheme(), QString());
    }

    void cleanup() { m_ground.reset(); }

    void aClickHidesAndShows()
    {
        QSignalSpy changed(m_editor, &ToolbarLayoutEditor::configChanged);
        click(ToolType::Arrow);
        QCOMPARE(words(m_editor->toolbarLayout(), false), QStringLiteral("arrow ") + QLatin1String(kHidden));
        QCOMPARE(parseToolbarLayout(changed.at(0).at(0).toString()), m_editor->toolbarLayout());
        click(ToolType::Arrow);
        QCOMPARE(words(m_editor->toolbarLayout(), true),
                 QStringLiteral("rect pen marker eraser mosaic text sequence ocr record long_screenshot arrow"));
        QCOMPARE(changed.size(), 2);
    }

    void aDragMovesToThePlaceOfTheMark()
    {
        const struct
        {
            ToolType tool;
            ToolType over;
            QPoint offset;
            int place; // among the visible ones; -1 for hidden
        } rows[]{
            {ToolType::Eraser, ToolType::Arrow, {-5, 0}, 1}, // the left half of a cell
            {ToolType::Eraser, ToolType::Arrow, {5, 0}, 2},
            {ToolType::Rect, ToolType::Ocr, {23, 0}, 8},      // behind the end of a row
            {ToolType::Eraser, ToolType::Arrow, {-5, 22}, 1}, // between two rows counts for the upper one
            {ToolType::Rect, ToolType::LongScreenshot, {100, 0}, 10},
            {ToolType::Watermark, ToolType::Pen, {-5, 0}, 2},
            {ToolType::Pen, ToolType::Watermark, {60, 0}, -1},
        };
        for (const auto &row : rows) {
            m_dialog->open(lightTheme(), QString());
            drag(m_editor, centre(row.tool), centre(row.over) + row.offset);
            QStringList left = words(m_editor->toolbarLayout(), true).split(u' ');
            QCOMPARE(left.indexOf(toolTypeName(row.tool)), row.place);
            left.removeOne(toolTypeName(row.tool)); // the others keep their order
            QStringList others = QString::fromLatin1(kVisible).split(u' ');
            others.removeOne(toolTypeName(row.tool));
            QCOMPARE(left, others);
        }
        m_dialog->open(lightTheme(), QString());
        QSignalSpy changed(m_editor, &ToolbarLayoutEditor::configChanged);
        drag(m_editor, centre(ToolType::Eraser), centre(ToolType::Mosaic) + QPoint(-5, 0));       // before its follower
        drag(m_editor, centre(ToolType::Spotlight), centre(ToolType::Watermark) + QPoint(60, 0)); // all hidden
        drag(m_editor, centre(ToolType::Pen), centre(ToolType::Pen) + QPoint(0, -90));            // onto the title
        drag(m_editor, centre(ToolType::Pen), centre(ToolType::Pen) + QPoint(-300, 0));
        QCOMPARE(m_editor->toolbarLayout(), defaultToolbarLayout());
        QCOMPARE(changed.size() + m_ground->events, 0);
    }

    void theWholeToolbarCanBeEmptiedAndFilledAgain()
    {
        const ToolbarLayout before = m_editor->toolbarLayout();
        for (const ToolbarItem &item : before) {
            if (item.visible)
                click(item.tool);
        }
        QVERIFY(words(m_editor->toolbarLayout(), true).isEmpty());
        drag(m_editor, centre(ToolType::Pen), m_editor->toolbarSection().center());
        QCOMPARE(words(m_editor->toolbarLayout(), true), QStringLiteral("pen"));
        QSignalSpy changed(m_editor, &ToolbarLayoutEditor::configChanged);
        QTest::mouseClick(m_editor, Qt::LeftButton, {}, m_editor->restoreRect().center());
        QCOMPARE(m_editor->toolbarLayout(), defaultToolbarLayout());
        QCOMPARE(changed.size(), 1);
        QVERIFY(changed.at(0).at(0).toString().isEmpty());
        QTest::mouseClick(m_editor, Qt::LeftButton, {}, m_editor->restoreRect().center());
        QCOMPARE(changed.size(), 1);
    }

    void theKeyboardDoesWhatThePointerDoes_data()
    {
        QTest::addColumn<QString>("keys"); ///< l r u d: arrows, L R: with Ctrl, s: Space, e: End
        QTest::addColumn<QString>("visible");
        QTest::addColumn<QString>("current");
        const QString same = QLatin1String(kVisible);
        const auto row = [](const char *name, const char *keys, const QString &visible, ToolType current) {
            QTest::newRow(name) << QString::fromLatin1(keys) << visible
                                << (current == ToolType::None ? QStringLiteral("恢复默认") : toolbarText(current));
        };
        row("along the row and over its end", "rrrrrrrrr", same, ToolType::Record);
        row("on to the hidden ones and no further", "eeerr", same, ToolType::Watermark);
        row("down the rows", "rdd", same, ToolType::Spotlight);
        row("down where the row is shorter", "rrrrd", same, ToolType::LongScreenshot);
        row("up and out to the link", "rduul", same, ToolType::None);
        row("from the link", "uur", same, ToolType::Rect);
        row("moved right", "RR",
            QStringLiteral("arrow pen rect marker eraser mosaic text sequence ocr record "
                           "long_screenshot"),
            ToolType::Rect);
        row("moved left, no further than the first", "rLLL",
            QStringLiteral("arrow rect pen marker eraser mosaic text sequence ocr record long_screenshot"),
            ToolType::Arrow);
        row("moved to the end", "rdR", same, ToolType::LongScreenshot);
        row("hidden ones have no order to move in", "eLR", same, ToolType::Watermark);
        row("hidden", "rs", QStringLiteral("rect pen marker eraser mosaic text sequence ocr record long_screenshot"),
            ToolType::Arrow);
        row("shown again", "es", same + QStringLiteral(" watermark"), ToolType::Watermark);
        row("restored", "rssuus", same, ToolType::None);
    }

    void theKeyboardDoesWhatThePointerDoes()
    {
        QFETCH(QString, keys);
        m_editor->setFocus(Qt::TabFocusReason);
        QVERIFY(m_editor->hasFocus());
        for (const QChar key : keys) {
            const Qt::Key code = key.toLower() == u'l'   ? Qt::Key_Left
                                 : key.toLower() == u'r' ? Qt::Key_Right
                                 : key == u'u'           ? Qt::Key_Up
                                 : key == u'd'           ? Qt::Key_Down
                                 : key == u's'           ? Qt::Key_Space
                                                         : Qt::Key_End;
            QTest::keyClick(m_editor, code, key.isUpper() ? Qt::ControlModifier : Qt::NoModifier);
        }
        QTEST(words(m_editor->toolbarLayout(), true), "visible");
        QFETCH(QString, current);
        QCOMPARE(m_editor->accessibleName().section(u',', 0, 0), current);
        QCOMPARE(m_ground->events, 0);
    }

    void textsThatComeDuringADragAreIgnored()
    {
        const QPoint from = centre(ToolType::Pen);
        QTest::mousePress(m_editor, Qt::LeftButton, {}, from);
        QTest::mouseMove(m_editor, from + QPoint(-40, 0));
        m_editor->setConfig(toolbarLayoutJson(withToolHidden(defaultToolbarLayout(), ToolType::Rect)));
        QCOMPARE(m_editor->toolbarLayout(), defaultToolbarLayout());
        QTest::mouseRelease(m_editor, Qt::LeftButton, {}, from);
        m_editor->setConfig(toolbarLayoutJson(withToolHidden(defaultToolbarLayout(), ToolType::Rect)));
        QVERIFY(words(m_editor->toolbarLayout(), false).startsWith(QStringLiteral("rect")));
    }

    void cancelGivesBackWhatWasThere()
    {
        for (const QString &initial :
             {QString(), toolbarLayoutJson(withToolHidden(defaultToolbarLayout(), ToolType::Pen)), u"[{"_qs}) {
            m_dialog->open(lightTheme(), initial);
            click(ToolType::Mosaic);
            QSignalSpy changed(m_dialog, &ToolbarConfigDialog::configChanged);
            QSignalSpy closed(m_dialog, &ToolbarConfigDialog::closeRequested);
            QTest::mouseClick(button("toolbarConfigCancel"), Qt::LeftButton);
            QCOMPARE(changed.last().first().toString(), initial);
            QCOMPARE(closed.size(), 1);
            QCOMPARE(m_editor->toolbarLayout(), parseToolbarLayout(initial));
        }
    }

    void doneEscapeAndTheOutsideKeepTheChanges()
    {
        QSignalSpy closed(m_dialog, &ToolbarConfigDialog::closeRequested);
        click(ToolType::Mosaic);
        QSignalSpy changed(m_dialog, &ToolbarConfigDialog::configChanged);
        QTest::mouseClick(button("toolbarConfigDone"), Qt::LeftButton);
        QCOMPARE(closed.size(), 1);
        QTest::keyClick(m_dialog, Qt::Key_Escape);
        QCOMPARE(closed.size(), 2);
        QTest::mouseClick(m_dialog, Qt::LeftButton, {}, {5, 5});
        QCOMPARE(closed.size(), 3);

        // None of these is a click outside.
        QTest::mouseClick(m_dialog, Qt::LeftButton, {}, m_dialog->cardRect().bottomLeft() + QPoint(30, -8));
        QTest::mouseClick(m_dialog, Qt::RightButton, {}, {5, 5});
        drag(m_dialog, m_dialog->cardRect().topLeft() + QPoint(30, 8), {5, 5});
        QCOMPARE(closed.size(), 3);
        QVERIFY(changed.isEmpty());
        QCOMPARE(m_ground->events, 0);
    }

    void theCardIsDraggedByItsHeaderAndStaysInside()
    {
        QCOMPARE(m_dialog->geometry(), m_ground->rect());
        const QRect start = m_dialog->cardRect();
        QVERIFY((start.center() - m_ground->rect().center()).manhattanLength() <= 1);
        const QPoint title(30, m_editor->headerRect().center().y());
        drag(m_editor, title, title + QPoint(50, 40)); // the press falls through the editor
        QVERIFY(m_dialog->cardRect().topLeft() != start.topLeft());
        const QRect moved = m_dialog->cardRect();
        drag(m_editor, {30, m_editor->toolbarSection().top() + 5}, {200, 300});
        QCOMPARE(m_dialog->cardRect(), moved);
        drag(m_dialog, moved.topLeft() + QPoint(30, 8), moved.topLeft() + QPoint(3000, 3008));
        QCOMPARE(m_dialog->cardRect().bottomRight(), m_ground->rect().bottomRight() - QPoint(8, 8));

        // A row less leaves its corner where it is, and so does a row more while there is room.
        const QRect low = m_dialog->cardRect();
        for (const ToolType tool : {ToolType::Rect, ToolType::Arrow})
            click(tool);
        QCOMPARE(m_dialog->cardRect(), low.adjusted(0, 0, 0, -45));
        QTest::mouseClick(m_editor, Qt::LeftButton, {}, m_editor->restoreRect().center());
        QCOMPARE(m_dialog->cardRect(), low);
        QVERIFY(m_dialog->cardRect().contains(button("toolbarConfigDone")->geometry()));

        m_dialog->hide();
        m_dialog->open(lightTheme(), QString());
        QCOMPARE(m_dialog->cardRect(), start);
        m_ground->resize(500, 420);
        QCOMPARE(m_dialog->size(), QSize(500, 420));
        QVERIFY(m_dialog->rect().contains(m_dialog->cardRect()));
    }

    void theKeyboardStaysAndGoesBack()
    {
        QVERIFY(m_dialog->hasFocus());
        QTest::keyClick(m_dialog, Qt::Key_A);
        QTest::keyClick(m_dialog, Qt::Key_C, Qt::ControlModifier);
        QSignalSpy closed(m_dialog, &ToolbarConfigDialog::closeRequested);
        for (QWidget *stop : {static_cast<QWidget *>(m_editor), button("toolbarConfigCancel"),
                              button("toolbarConfigDone"), static_cast<QWidget *>(m_editor)}) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            QCOMPARE(QApplication::focusWidget(), stop);
        }
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_A);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab);
        QCOMPARE(QApplication::focusWidget(), button("toolbarConfigDone"));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab);
        QCOMPARE(QApplication::focusWidget(), button("toolbarConfigCancel"));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        QCOMPARE(closed.size(), 1);
        QCOMPARE(m_ground->events, 0);
        m_dialog->hide();
        QVERIFY(m_ground->hasFocus());
    }

private:
    [[nodiscard]] QPoint centre(ToolType tool) const { return m_editor->cellRect(tool).center(); }
    void click(ToolType tool) { QTest::mouseClick(m_editor, Qt::LeftButton, {}, centre(tool)); }
    [[nodiscard]] QWidget *button(const char *name) const
    {
        return m_dialog->findChild<QWidget *>(QString::fromLatin1(name));
    }

    std::unique_ptr<Ground> m_ground;
    ToolbarConfigDialog *m_dialog = nullptr;
    ToolbarLayoutEditor *m_editor = nullptr;
};

TAVREL_TEST_MAIN(QApplication, ToolbarConfigTest)
#include "test_toolbar_config.moc"
