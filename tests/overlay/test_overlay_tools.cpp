#include "annotate/path_shape.h"
#include "annotate/sequence_shape.h"
#include "annotate/text_shape.h"
#include "outcomes.h"
#include "overlay/overlay_panels.h"
#include "overlay/tool_guide_bubble.h"
#include "overlay/toolbar_widget.h"
#include "support/test_main.h"
#include "ui/color_board.h"
#include "ui/color_chip.h"
#include "ui/color_chip_row.h"
#include "ui/color_library.h"
#include "ui/outlined_text_edit.h"
#include "ui/theme_source.h"
#include "ui/tool_steps.h"
#include "ui/toolbar_config_dialog.h"

#include <QApplication>
#include <QLineEdit>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QSignalSpy>
#include <QToolButton>
#include <QWheelEvent>

using namespace tavrel;
using ui::CaptureOverlay;
using Action = CaptureOutcome::Action;

namespace {

constexpr QSize kSize(640, 480);

platform::CapturedDisplay captured()
{
    platform::CapturedDisplay display;
    display.id = 1;
    display.geometry = QRect(QPoint(0, 0), kSize);
    display.devicePixelRatio = qApp->devicePixelRatio();
    display.image = QImage((QSizeF(kSize) * display.devicePixelRatio).toSize(), QImage::Format_ARGB32_Premultiplied);
    display.image.fill(QColor(240, 240, 240));
    display.image.setDevicePixelRatio(display.devicePixelRatio);
    return display;
}

} // namespace

class OverlayToolsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_overlay = std::make_unique<CaptureOverlay>(captured(), SettingsConfig());
        m_outcomes = std::make_unique<Outcomes>(*m_overlay);
        m_overlay->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_overlay.get()));
        m_overlay->setSelectionRect({50, 50, 500, 300});
    }

    void cleanup() { m_overlay.reset(); }

    /// What stands in a field of the attribute bar goes to the document, never to one that is gone.
    void theOverlayMayGoWhileAFieldHasTheFocus()
    {
        m_overlay->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_overlay.get()));
        m_overlay->setTool(ToolType::Sequence);
        auto *field = m_overlay->findChild<QLineEdit *>(QStringLiteral("seqValue"));
        QVERIFY(field);
        field->setFocus();
        QVERIFY(field->hasFocus());
        field->selectAll();
        QTest::keyClicks(field, QStringLiteral("7"));
        bool documentWasThere = false;
        connect(field, &QLineEdit::editingFinished, this,
                [&documentWasThere, &numbers = document()] { documentWasThere = numbers.sequenceValue() == 7; });
        m_overlay.reset();
        QVERIFY(documentWasThere);
    }

    /// Every tool draws inside the selection, and the result shows what the overlay shows.
    void toolsDrawAndTheResultIsWhatWasSeen()
    {
        SettingsConfig config;
        config.toolGuideShown = true; // these would lie over the shapes
        config.showMagnifier = config.showColorPicker = false;
        m_overlay->setConfig(config);
        int count = 0;
        double y = 70;
        for (const ToolType tool :
             {ToolType::Rect, ToolType::Circle, ToolType::Line, ToolType::Arrow, ToolType::Pen, ToolType::Marker}) {
            m_overlay->setTool(tool);
            drag({{90, y}, {150, y + 20}, {320, y + 25}});
            QCOMPARE(document().shapes().size(), ++count);
            QCOMPARE(document().shapes().last()->type(), tool);
            y += 30;
        }
        document().clearSelection();
        m_overlay->setTool(ToolType::None);
        QTest::keyClick(m_overlay.get(), Qt::Key_Return);
        QCOMPARE(m_outcomes->count(Action::Copy), 1);
        const QImage result = m_outcomes->picture();
        const double ratio = qApp->devicePixelRatio();
        const QImage seen = m_overlay->grab(QRect(50, 50, 500, 300)).toImage();
        int inked = 0;
        for (int row = qRound(20 * ratio); row < qRound(280 * ratio); ++row) { // away from the selection's marks
            for (int column = qRound(17 * ratio); column < qRound(400 * ratio); ++column) {
                const QColor expected = seen.pixelColor(column, row);
                QCOMPARE(result.pixelColor(column, row), expected);
                inked += expected != QColor(240, 240, 240);
            }
        }
        QVERIFY(inked > 2000 * ratio);
    }

    void shapesArePickedMovedAndRemoved()
    {
        m_overlay->setTool(ToolType::Rect);
        drag({{100, 100}, {200, 160}});
        m_overlay->setTool(ToolType::Arrow);
        drag({{300, 100}, {400, 200}});
        // A click that draws nothing takes the shape below, and the tool follows it.
        drag({{100, 130}, {100, 130}});
        QCOMPARE(document().shapes().size(), 2);
        QCOMPARE(document().tool(), ToolType::Rect);
        QCOMPARE(document().selected(), document().shapes().last().get());
        drag({{100, 130}, {120, 150}});
        QCOMPARE(*document().selected()->bounds(), QRectF(120, 120, 100, 60));
        drag({{220, 180}, {260, 200}}); // its corner
        QCOMPARE(*document().selected()->bounds(), QRectF(120, 120, 140, 80));
        QTest::keyClick(m_overlay.get(), Qt::Key_Delete);
        QCOMPARE(document().shapes().size(), 1);
        QTest::keyClick(m_overlay.get(), Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(document().shapes().size(), 2);
        QTest::keyClick(m_overlay.get(), Qt::Key_Y, Qt::ControlModifier);
        QCOMPARE(document().shapes().size(), 1);
        m_overlay->setTool(ToolType::Eraser);
        drag({{350, 90}, {350, 150}});
        QCOMPARE(document().shapes().size(), 0);
    }

    void theBoardTellsInTheOverlayToo()
    {
        ui::ColorLibrary::instance().reset();
        m_overlay->setTool(ToolType::Rect);
        m_overlay->findChild<QToolButton *>(QStringLiteral("moreColors"))->click();
        auto *board = m_overlay->findChild<ui::ColorBoard *>();
        QVERIFY(board);
        const auto showsTipOf = [this](QWidget *part) {
            QEnterEvent event(QPointF(2, 2), part->mapTo(m_overlay.get(), QPointF(2, 2)),
                              part->mapToGlobal(QPointF(2, 2)));
            QCoreApplication::sendEvent(part, &event);
            return QTest::qWaitFor([this] { return m_overlay->findChild<QWidget *>(QStringLiteral("toolTip")); });
        };
        QVERIFY(showsTipOf(board->findChild<QWidget *>(QStringLiteral("eyedropperButton"))));
        QTest::keyClick(m_overlay->focusWidget(), Qt::Key_Escape);
        QTRY_VERIFY(!m_overlay->findChild<QWidget *>(QStringLiteral("toolTip")));

        // A chip that came later.
        m_overlay->findChild<QToolButton *>(QStringLiteral("moreColors"))->click();
        ui::ColorLibrary::instance().add(QStringLiteral("#123456"));
        board = m_overlay->findChild<ui::ColorBoard *>();
        QCoreApplication::processEvents();
        QVERIFY(showsTipOf(board->findChild<ui::ColorChipRow *>()->chips().constLast()));
        ui::ColorLibrary::instance().reset();
    }

    void keysWhileDrawingStrandNothing()
    {
        m_overlay->setTool(ToolType::Rect);
        drag({{100, 100}, {200, 160}});
        send(QEvent::MouseButtonPress, {300, 100});
        send(QEvent::MouseMove, {400, 200});
        QTest::keyClick(m_overlay.get(), Qt::Key_Z, Qt::ControlModifier); // the one being drawn, and no more
        QCOMPARE(document().shapes().size(), 1);
        send(QEvent::MouseMove, {420, 220});
        send(QEvent::MouseButtonRelease, {420, 220});
        QCOMPARE(document().shapes().size(), 1);
        send(QEvent::MouseButtonPress, {300, 100});
        send(QEvent::MouseMove, {400, 200});
        QTest::keyClick(m_overlay.get(), Qt::Key_A, Qt::ControlModifier);
        QCOMPARE(m_overlay->selection(), QRectF(m_overlay->rect()));
        send(QEvent::MouseButtonRelease, {400, 200});
        QVERIFY(!document().isInteracting());
        QCOMPARE(document().shapes().size(), 2);
        QTest::keyClick(m_overlay.get(), Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(document().shapes().size(), 1);
    }

    void theToolbarRunsTheOverlay()
    {
        ui::ToolbarWidget *toolbar = m_overlay->panels().toolbar();
        Q_EMIT toolbar->toolSelected(ToolType::Pen);
        drag({{100, 100}, {150, 130}, {200, 100}});
        QCOMPARE(document().shapes().size(), 1);
        Q_EMIT toolbar->actionTriggered(ToolType::Undo);
        QCOMPARE(document().shapes().size(), 0);
        Q_EMIT toolbar->actionTriggered(ToolType::Redo);
        QCOMPARE(document().shapes().size(), 1);
        for (const auto &[tool, action] :
             {std::pair(ToolType::Copy, Action::Copy), std::pair(ToolType::Save, Action::Save),
              std::pair(ToolType::Pin, Action::Pin), std::pair(ToolType::Cancel, Action::Leave)}) {
            Q_EMIT toolbar->actionTriggered(tool);
            QCOMPARE(m_outcomes->all.last().action, action);
        }
    }

    void anOpenOverlayFollowsTheTheme()
    {
        ui::ThemeSource themes(QStringLiteral("light"));
        m_overlay = std::make_unique<CaptureOverlay>(captured(), SettingsConfig(), &themes);
        m_overlay->show();
        m_overlay->setSelectionRect({50, 50, 500, 300});
        const auto surface = [this] {
            QWidget *toolbar = m_overlay->panels().toolbar();
            return toolbar->grab().toImage().pixelColor(toolbar->width() / 2, 3).lightness();
        };
        QVERIFY(surface() > 200);
        themes.setSetting(QStringLiteral("dark"));
        QVERIFY(surface() < 100);
    }

    void noButtonOfTheToolbarIsOutOfReach()
    {
        ui::ToolbarWidget *toolbar = m_overlay->panels().toolbar();
        for (const bool expanded : {false, true}) {
            toolbar->setExpanded(expanded);
            for (const QRectF &selection :
                 {QRectF(0, 100, 60, 60), QRectF(580, 100, 60, 60), QRectF(m_overlay->rect())}) {
                m_overlay->setSelectionRect(selection);
                QVERIFY(m_overlay->rect().contains(toolbar->geometry()));
            }
        }
    }

    void closedFromOutsideItEndsTheSession()
    {
        QVERIFY(m_overlay->close());
        QCOMPARE(m_outcomes->count(Action::Leave), 1);
    }

    void theGuideGoesAwayForGood()
    {
        QSignalSpy dismissed(m_overlay.get(), &CaptureOverlay::toolGuideDismissed);
        auto *guide = m_overlay->findChild<ui::ToolGuideBubble *>();
        QVERIFY(guide && guide->isVisible());
        Q_EMIT guide->dismissed();
        QVERIFY(!guide->isVisible());
        m_overlay->setSelectionRect({80, 80, 300, 200});
        QVERIFY(!guide->isVisible());
        QCOMPARE(dismissed.count(), 1);
    }

    void theGuideShowsOnlyWhereItHelps()
    {
        const auto guide = [this]() -> ui::ToolGuideBubble * { return m_overlay->findChild<ui::ToolGuideBubble *>(); };
        SettingsConfig config;
        config.toolbarConfig = QStringLiteral("[{\"id\":\"smart_erase\"},{\"id\":\"spotlight\"},"
                                              "{\"id\":\"magnifier\"},{\"id\":\"watermark\"}]");
        m_overlay->setConfig(config);
        QVERIFY(!guide()->isVisible()); // nothing is hidden
        m_overlay->setConfig(SettingsConfig());
        QVERIFY(guide()->isVisible());
        m_overlay->clearSelection();
        QVERIFY(!guide()->isVisible());
        m_overlay->setSelectionRect({50, 50, 500, 300});
        QVERIFY(guide()->isVisible());

        QSignalSpy dismissed(m_overlay.get(), &CaptureOverlay::toolGuideDismissed);
        ui::ToolbarWidget *toolbar = m_overlay->panels().toolbar();
        auto *arrow = toolbar->findChild<QWidget *>(QStringLiteral("toolbarExpand"));
        QTest::mouseClick(arrow, Qt::LeftButton); // found without it
        QVERIFY(!guide()->isVisible());
        QTest::mouseClick(arrow, Qt::LeftButton); // the editor
        toolbar->setExpanded(false);
        m_overlay->setSelectionRect({60, 50, 500, 300});
        QVERIFY(!guide()->isVisible());
        QCOMPARE(dismissed.count(), 1);

        config = SettingsConfig();
        config.toolGuideShown = true; // in another capture
        CaptureOverlay later(captured(), config);
        later.show();
        later.setSelectionRect({50, 50, 500, 300});
        QVERIFY(!later.findChild<ui::ToolGuideBubble *>());
    }

    void theToolbarIsConfiguredInPlace()
    {
        QSignalSpy changed(m_overlay.get(), &CaptureOverlay::toolbarConfigChanged);
        ui::ToolbarWidget *toolbar = m_overlay->panels().toolbar();
        Q_EMIT toolbar->configRequested();
        auto *dialog = m_overlay->findChild<ui::ToolbarConfigDialog *>();
        QVERIFY(dialog && dialog->isVisible());
        Q_EMIT dialog->configChanged(QStringLiteral("[{\"id\":\"pen\",\"visible\":true}]"));
        QCOMPARE(toolbar->toolbarLayout().first().tool, ToolType::Pen);
        QCOMPARE(changed.count(), 1);
        Q_EMIT dialog->closeRequested();
        QVERIFY(!dialog->isVisible());
        QVERIFY(m_overlay->hasSelection());
    }

    void wheelSteps_data()
    {
        QTest::addColumn<int>("tool");
        QTest::addColumn<int>("angle");
        QTest::addColumn<bool>("shift");
        QTest::addColumn<QString>("attributes"); // thickness, font, mosaic, blur, watermark, its font, zoom
        const auto add = [](const char *name, ToolType tool, int angle, bool shift, const char *attributes) {
            QTest::newRow(name) << static_cast<int>(tool) << angle << shift << QString::fromLatin1(attributes);
        };
        const char *nothing = "3 28 15 3 30 20 2.0";
        add("pen up", ToolType::Pen, 120, false, "4 28 15 3 30 20 2.0");
        add("pen to its limit", ToolType::Pen, 120 * 100, false, "30 28 15 3 30 20 2.0");
        add("arrow down to its limit", ToolType::Arrow, -120 * 9, false, "1 28 15 3 30 20 2.0");
        add("half a notch", ToolType::Pen, 60, false, nothing);
        add("eraser", ToolType::Eraser, 240, false, nothing);
        add("spotlight", ToolType::Spotlight, 240, false, nothing);
        add("numbers", ToolType::Sequence, -240, false, "3 24 15 3 30 20 2.0");
        add("text to its limit", ToolType::Text, -12000, false, "3 12 15 3 30 20 2.0");
        add("mosaic", ToolType::Mosaic, 240, false, "3 28 17 3 30 20 2.0");
        add("watermark", ToolType::Watermark, 240, false, "3 28 15 3 40 20 2.0");
        add("watermark's size", ToolType::Watermark, 240, true, "3 28 15 3 30 24 2.0");
        add("magnifier", ToolType::Magnifier, 120, false, "3 28 15 3 30 20 2.2");
        add("magnifier to its limit", ToolType::Magnifier, 120000, false, "3 28 15 3 30 20 8.0");
        add("magnifier's frame", ToolType::Magnifier, 240, true, "5 28 15 3 30 20 2.0");
        add("shift elsewhere", ToolType::Pen, 120, true, "4 28 15 3 30 20 2.0");
    }

    void wheelSteps()
    {
        QFETCH(int, tool);
        QFETCH(int, angle);
        QFETCH(bool, shift);
        QFETCH(QString, attributes);
        m_overlay->setTool(static_cast<ToolType>(tool));
        turnWheel(angle, shift ? Qt::ShiftModifier : Qt::NoModifier);
        const ShapeAttributes &now = document().attributes();
        const QString seen = QStringLiteral("%1 %2 %3 %4 %5 %6 %7")
                                 .arg(now.baseThickness)
                                 .arg(now.baseFontSize)
                                 .arg(now.mosaicStrength)
                                 .arg(now.blurStrength)
                                 .arg(now.watermarkOpacity * 100)
                                 .arg(now.watermarkFontSize)
                                 .arg(now.magnifierZoom, 0, 'f', 1);
        QCOMPARE(seen, attributes);
    }

    void smallWheelMovesAddUp()
    {
        m_overlay->setTool(ToolType::Pen);
        for (int i = 0; i < 12; ++i)
            scroll({0, 5});
        QCOMPARE(document().attributes().baseThickness, 5.0);
        scroll({0, 25});
        scroll({0, -29}); // the other way drops what was left
        QCOMPARE(document().attributes().baseThickness, 5.0);
        scroll({0, -1});
        QCOMPARE(document().attributes().baseThickness, 4.0);
        scroll({50, 40}); // sideways
        QCOMPARE(document().attributes().baseThickness, 4.0);
        SettingsConfig reversed;
        reversed.wheelZoomReversed = true;
        m_overlay->setConfig(reversed);
        turnWheel(-120);
        QCOMPARE(document().attributes().baseThickness, 5.0);
        document().setMarkerRectMode(true);
        m_overlay->setTool(ToolType::Marker);
        turnWheel(-1200);
        QCOMPARE(document().attributes().baseThickness, 5.0);
    }

    void thePointerTellsWhatAPressWouldDo()
    {
        m_overlay->setTool(ToolType::Rect);
        drag({{150, 150}, {250, 250}});
        const auto shapeAt = [this](const QPointF &at) {
            send(QEvent::MouseMove, at, Qt::NoButton);
            return m_overlay->cursor().shape();
        };
        QCOMPARE(shapeAt({150, 150}), Qt::SizeFDiagCursor);
        QCOMPARE(shapeAt({250, 150}), Qt::SizeBDiagCursor);
        QCOMPARE(shapeAt({200, 150}), Qt::SizeAllCursor);
        QCOMPARE(shapeAt({400, 200}), Qt::BitmapCursor);
        QCOMPARE(shapeAt({20, 20}), Qt::ArrowCursor);
        QCOMPARE(shapeAt({50, 200}), Qt::SizeHorCursor);
        m_overlay->setTool(ToolType::Text);
        QCOMPARE(shapeAt({400, 200}), Qt::IBeamCursor);
        m_overlay->setTool(ToolType::Eraser);
        QCOMPARE(shapeAt({400, 200}), Qt::CrossCursor);
        // A thicker pen has a larger pointer.
        m_overlay->setTool(ToolType::Pen);
        shapeAt({400, 200});
        const QSize thin = m_overlay->cursor().pixmap().size();
        turnWheel(120 * 20);
        QVERIFY(m_overlay->cursor().pixmap().width() > thin.width() + 15);
    }

    void textIsTypedInPlaceAndDoesNotJump_data()
    {
        QTest::addColumn<int>("style");
        QTest::addColumn<QString>("typed");
        QTest::newRow("plain") << static_cast<int>(TextStyle::Standard) << QStringLiteral("Hxg");
        QTest::newRow("two lines") << static_cast<int>(TextStyle::Standard) << QStringLiteral("AB\nog");
        QTest::newRow("border") << static_cast<int>(TextStyle::Border) << QStringLiteral("Wide\nH");
        QTest::newRow("plate") << static_cast<int>(TextStyle::RoundBackground) << QStringLiteral("文字");
    }

    void textIsTypedInPlaceAndDoesNotJump()
    {
        QFETCH(int, style);
        QFETCH(QString, typed);
        SettingsConfig config;
        config.toolGuideShown = true;
        config.showMagnifier = config.showColorPicker = false;
        m_overlay->setConfig(config);
        document().setTextStyle(static_cast<TextStyle>(style));
        m_overlay->setTool(ToolType::Text);
        drag({{200, 150}, {200, 150}});
        auto *edit = m_overlay->findChild<ui::OutlinedTextEdit *>();
        QVERIFY(edit && edit->isVisible());
        for (const QString &line : typed.split(u'\n')) {
            if (!edit->toPlainText().isEmpty())
                QTest::keyClick(edit, Qt::Key_Return, Qt::ControlModifier);
            edit->insertPlainText(line);
        }
        edit->setCursorWidth(0);
        send(QEvent::MouseMove, {500, 300}, Qt::NoButton);
        const QRect before = letters();
        QTest::keyClick(edit, Qt::Key_Escape);
        QVERIFY(!edit->isVisible());
        QVERIFY(m_overlay->hasSelection());
        QCOMPARE(document().shapes().size(), 1);
        const QRect after = letters();
        QVERIFY2(
            before.isValid() && (before.topLeft() - after.topLeft()).manhattanLength() <= 1 &&
                (before.bottomRight() - after.bottomRight()).manhattanLength() <= 1,
            qPrintable(QStringLiteral("%1,%2 to %3,%4").arg(before.x()).arg(before.y()).arg(after.x()).arg(after.y())));
        QTest::keyClick(m_overlay.get(), Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(document().shapes().size(), 0);
    }

    void textEditsEnd()
    {
        m_overlay->setTool(ToolType::Text);
        drag({{200, 150}, {200, 150}});
        auto *edit = m_overlay->findChild<ui::OutlinedTextEdit *>();
        edit->insertPlainText(QStringLiteral(" \n "));
        drag({{300, 250}, {300, 250}}); // a blank one goes, another one begins
        QVERIFY(edit->isVisible() && edit->toPlainText().isEmpty());
        edit->insertPlainText(QStringLiteral("kept"));
        send(QEvent::MouseButtonPress, {500, 300}, Qt::RightButton); // ends it and nothing else
        QVERIFY(m_overlay->hasSelection() && !edit->isVisible());
        QCOMPARE(document().shapes().size(), 1);
        drag({{300, 250}, {300, 250}}); // again
        QVERIFY(edit->isVisible());
        QCOMPARE(edit->toPlainText(), QStringLiteral("kept"));
        edit->insertPlainText(QStringLiteral(" and more"));
        Q_EMIT m_overlay->panels().toolbar()->actionTriggered(ToolType::Undo);
        QVERIFY(!edit->isVisible());
        QCOMPARE(dynamic_cast<TextShape *>(document().shapes().first().get())->text(), QStringLiteral("kept"));
        // An undo below the editor's feet makes the edit void.
        drag({{300, 250}, {300, 250}});
        edit->insertPlainText(QStringLiteral("lost"));
        document().undo();
        m_overlay->setTool(ToolType::Pen);
        QVERIFY(!edit->isVisible());
        QCOMPARE(document().shapes().size(), 0);
    }

    /// What is erased on the overlay is erased in the result, also when it is asked for at once.
    void erasedPlacesAreErasedInTheResult()
    {
        platform::CapturedDisplay display = captured();
        {
            QPainter painter(&display.image);
            painter.fillRect(200, 150, 60, 30, Qt::red);
        }
        m_overlay = std::make_unique<CaptureOverlay>(display, SettingsConfig());
        m_outcomes = std::make_unique<Outcomes>(*m_overlay);
        m_overlay->show();
        m_overlay->setSelectionRect({50, 50, 500, 300});
        const auto redPixels = [](const QImage &image) {
            int count = 0;
            for (int y = 0; y < image.height(); ++y) {
                for (int x = 0; x < image.width(); ++x) {
                    const QColor color = image.pixelColor(x, y);
                    count += color.red() > 200 && color.green() < 100;
                }
            }
            return count;
        };
        const QRect around(180, 130, 110, 75);
        QVERIFY(redPixels(m_overlay->grab(around).toImage()) > 1000);
        m_overlay->setTool(ToolType::SmartErase);
        drag({{185, 135}, {220, 160}, {280, 195}});
        m_overlay->setTool(ToolType::None);
        QTest::keyClick(m_overlay.get(), Qt::Key_Return);
        QCOMPARE(m_outcomes->count(Action::Copy), 1);
        QCOMPARE(redPixels(m_outcomes->picture()), 0);
        QTRY_COMPARE(redPixels(m_overlay->grab(around).toImage()), 0);
        QTest::keyClick(m_overlay.get(), Qt::Key_Z, Qt::ControlModifier);
        QVERIFY(redPixels(m_overlay->grab(around).toImage()) > 1000);
    }

    void badgesTakeALabel()
    {
        m_overlay->setTool(ToolType::Sequence);
        drag({{200, 150}, {200, 150}});
        auto *edit = m_overlay->findChild<ui::OutlinedTextEdit *>();
        QVERIFY(edit && edit->isVisible());
        edit->insertPlainText(QStringLiteral("here"));
        drag({{200, 250}, {280, 300}});
        QTest::keyClick(edit, Qt::Key_Return);
        QCOMPARE(document().shapes().size(), 2);
        const auto text = [this](int index) {
            return dynamic_cast<SequenceShape *>(document().shapes().at(index).get())->displayText();
        };
        QCOMPARE(text(0), QStringLiteral("1. here"));
        QCOMPARE(text(1), QStringLiteral("2"));
        document().select(document().shapes().last().get());
        QTest::keyClick(m_overlay.get(), Qt::Key_A);
        QVERIFY(edit->isVisible());
        edit->insertPlainText(QStringLiteral("there"));
        m_overlay->setTool(ToolType::None);
        QCOMPARE(text(1), QStringLiteral("2. there"));
    }

    void highlightersFollowTheLinesThatAreFound()
    {
        QList<QPair<QSize, std::function<void(ui::FoundLines)>>> searches;
        m_overlay->setLineSearch([&](const QImage &picture, QObject *, std::function<void(ui::FoundLines)> answer) {
            searches.append({picture.size(), std::move(answer)});
        });
        QSignalSpy told(m_overlay.get(), &CaptureOverlay::markerSnapChanged);
        document().setMarkerSnapText(true);
        m_overlay->setTool(ToolType::Marker);
        QCOMPARE(told.count(), 1);
        const double ratio = qApp->devicePixelRatio();
        QCOMPARE(searches.size(), 1);
        QCOMPARE(searches[0].first, (QSizeF(500, 300) * ratio).toSize());
        drag({{100, 100}, {200, 100}});
        QVERIFY(dynamic_cast<PathShape *>(document().shapes().last().get())); // not known yet
        QCOMPARE(searches.size(), 1);
        searches[0].second({.lines = {QRectF(QPointF(30, 60) * ratio, QSizeF(200, 20) * ratio)}, .error = {}});
        drag({{100, 120}, {200, 120}});
        QCOMPARE(*document().shapes().last()->bounds(), QRectF(78, 108.5, 204, 23));
        QCOMPARE(document().shapes().size(), 2);

        // Another selection has other lines.
        m_overlay->setSelectionRect({60, 60, 400, 200});
        drag({{100, 200}, {200, 200}});
        QVERIFY(dynamic_cast<PathShape *>(document().shapes().last().get()));
        QCOMPARE(searches.size(), 2);
        QTest::ignoreMessage(QtWarningMsg, "智能整行 OCR 失败：no model");
        searches[1].second({.lines = {}, .error = QStringLiteral("no model")});
        drag({{100, 140}, {200, 140}});
        QCOMPARE(searches.size(), 3); // asked again
    }

private:
    ShapeDocument &document() { return m_overlay->document(); }

    void drag(const QList<QPointF> &way)
    {
        send(QEvent::MouseButtonPress, way.first());
        for (const QPointF &at : way)
            send(QEvent::MouseMove, at);
        send(QEvent::MouseButtonRelease, way.last());
    }

    void send(QEvent::Type type, const QPointF &at, Qt::MouseButton held = Qt::LeftButton)
    {
        const Qt::MouseButton button = type == QEvent::MouseMove ? Qt::NoButton : held;
        QMouseEvent event(type, at, at, at, button, held, Qt::NoModifier);
        QApplication::sendEvent(m_overlay.get(), &event);
    }

    /// Where the overlay shows the colour of a text, or nearly.
    QRect letters()
    {
        const QImage image = m_overlay->grab(QRect(100, 80, 300, 200)).toImage();
        QRect all;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const QColor color = image.pixelColor(x, y);
                if (color.red() > 200 && color.green() < 130 && color.blue() < 130)
                    all |= QRect(x, y, 1, 1);
            }
        }
        return all;
    }

    void turnWheel(int angle, Qt::KeyboardModifiers modifiers = {})
    {
        QWheelEvent event({200, 150}, {200, 150}, {}, {0, angle}, Qt::NoButton, modifiers, Qt::NoScrollPhase, false);
        QApplication::sendEvent(m_overlay.get(), &event);
    }

    void scroll(const QPoint &pixels)
    {
        QWheelEvent event({200, 150}, {200, 150}, pixels, pixels * 4, Qt::NoButton, {}, Qt::ScrollUpdate, false);
        QApplication::sendEvent(m_overlay.get(), &event);
    }

    std::unique_ptr<Outcomes> m_outcomes;
    std::unique_ptr<CaptureOverlay> m_overlay;
};

TAVREL_TEST_MAIN(QApplication, OverlayToolsTest)
#include "test_overlay_tools.moc"
