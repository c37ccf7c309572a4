#include "annotate/path_shape.h"
#include "annotate/text_shape.h"
#include "outcomes.h"
#include "overlay/overlay_panels.h"
#include "overlay/tool_guide_bubble.h"
#include "overlay/toolbar_widget.h"
#include "overlay_input.h"
#include "support/test_main.h"
#include "ui/color_board.h"
#include "ui/color_library.h"
#include "ui/outlined_text_edit.h"
#include "ui/theme_source.h"
#include "ui/tool_steps.h"
#include "ui/toolbar_config_dialog.h"

#include <QApplication>
#include <QLineEdit>
#include <QSignalSpy>
#include <QToolButton>

using namespace tavrel;
using ui::CaptureOverlay;
using Action = CaptureOutcome::Action;

namespace {

constexpr QSize kSize(640, 480);

platform::CapturedDisplay captured()
{
    return flatDisplay(kSize, QColor(240, 240, 240));
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
        Q_EMIT toolbar->actionTriggered(ToolType::Undo);
        QCOMPARE(document().shapes().size(), 0);
        Q_EMIT toolbar->actionTriggered(ToolType::Redo);
        QCOMPARE(document().shapes().size(), 1);
        for (const auto &[tool, action] : {std::pair(ToolType::Copy, Action::Copy),
                                           {ToolType::Save, Action::Save},
                                           {ToolType::Pin, Action::Pin},
                                           {ToolType::Cancel, Action::Leave}}) {
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

    void theWheelChangesWhatTheToolHas()
    {
        const QString untouched = QStringLiteral("3 28 15 30 20 2.0");
        const struct
        {
            ToolType tool;
            int angle;
            Qt::KeyboardModifiers modifiers;
            QString seen; // thickness, font, mosaic, watermark's opacity, its font, zoom
        } rows[]{
            {ToolType::Pen, 60, {}, untouched}, // half a notch
            {ToolType::Eraser, 240, {}, untouched},
            {ToolType::Pen, 120, Qt::ShiftModifier, u"4 28 15 30 20 2.0"_qs},
            {ToolType::Arrow, -120 * 9, {}, u"1 28 15 30 20 2.0"_qs}, // to its limit
            {ToolType::Sequence, -240, {}, u"3 24 15 30 20 2.0"_qs},
            {ToolType::Mosaic, 240, {}, u"3 28 17 30 20 2.0"_qs},
            {ToolType::Watermark, 240, {}, u"3 28 15 40 20 2.0"_qs},
            {ToolType::Watermark, 240, Qt::ShiftModifier, u"3 28 15 30 24 2.0"_qs},
            {ToolType::Magnifier, 120000, {}, u"3 28 15 30 20 8.0"_qs}, // to its limit
            {ToolType::Magnifier, 240, Qt::ShiftModifier, u"5 28 15 30 20 2.0"_qs},
        };
        for (const auto &row : rows) {
            init(); // anew
            m_overlay->setTool(row.tool);
            turnWheel(row.angle, row.modifiers);
            const ShapeAttributes &now = document().attributes();
            const QString seen = QStringLiteral("%1 %2 %3 %4 %5 %6")
                                     .arg(now.baseThickness)
                                     .arg(now.baseFontSize)
                                     .arg(now.mosaicStrength)
                                     .arg(now.watermarkOpacity * 100)
                                     .arg(now.watermarkFontSize)
                                     .arg(now.magnifierZoom, 0, 'f', 1);
            QCOMPARE(seen, row.seen);
        }
        init();
        SettingsConfig reversed;
        reversed.wheelZoomReversed = true;
        m_overlay->setConfig(reversed);
        m_overlay->setTool(ToolType::Pen);
        turnWheel(-120);
        QCOMPARE(document().attributes().baseThickness, 4.0);
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

    void textEditsEnd()
    {
        m_overlay->setTool(ToolType::Text);
        drag({{200, 150}, {200, 150}});
        auto *edit = m_overlay->findChild<ui::OutlinedTextEdit *>();
        edit->insertPlainText(QStringLiteral("kept"));
        send(QEvent::MouseButtonPress, {500, 300}, Qt::RightButton); // ends it and nothing else
        QVERIFY(m_overlay->hasSelection() && !edit->isVisible());
        QCOMPARE(document().shapes().size(), 1);
        drag({{200, 150}, {200, 150}}); // again
        QVERIFY(edit->isVisible());
        QCOMPARE(edit->toPlainText(), QStringLiteral("kept"));
        edit->insertPlainText(QStringLiteral(" and more"));
        Q_EMIT m_overlay->panels().toolbar()->actionTriggered(ToolType::Undo);
        QVERIFY(!edit->isVisible());
        QCOMPARE(dynamic_cast<TextShape *>(document().shapes().first().get())->text(), QStringLiteral("kept"));
        QTest::keyClick(m_overlay.get(), Qt::Key_Z, Qt::ControlModifier);
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
        sendMouse(m_overlay.get(), type, at, held);
    }

    void turnWheel(int angle, Qt::KeyboardModifiers modifiers = {})
    {
        sendWheel(m_overlay.get(), {200, 150}, angle, {}, modifiers);
    }

    std::unique_ptr<Outcomes> m_outcomes;
    std::unique_ptr<CaptureOverlay> m_overlay;
};

TAVREL_TEST_MAIN(QApplication, OverlayToolsTest)
#include "test_overlay_tools.moc"
