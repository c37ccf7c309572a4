#include "annotate/sequence_shape.h"
#include "annotate/shape_document.h"
#include "annotate/tool_memory.h"
#include "support/test_main.h"
#include "ui/attribute_bar.h"
#include "ui/color_board.h"
#include "ui/color_library.h"
#include "ui/modern_slider.h"
#include "ui/segment_track.h"
#include "ui/settings_combo_box.h"
#include "ui/thickness_capsule.h"
#include "ui/watermark_edit.h"

#include <QAccessible>
#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPointer>
#include <QSignalSpy>
#include <QToolButton>
#include <QWheelEvent>

using namespace tavrel;
using ui::AttributeBar;

namespace {

BaseShape *draw(ShapeDocument &document, ToolType tool, QPointF from = {10, 10}, QPointF to = {90, 70})
{
    document.setTool(tool);
    document.press(from.x(), from.y(), 1);
    document.move(from.x(), from.y(), to.x(), to.y(), false);
    return document.release();
}

} // namespace

class AttributeBarTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        ui::ColorLibrary::instance().reset();
        m_document = std::make_unique<ShapeDocument>();
        m_window = std::make_unique<QWidget>();
        m_window->setFocusPolicy(Qt::StrongFocus);
        m_window->resize(1200, 400);
        m_bar = new AttributeBar(m_document.get(), m_window.get());
        m_window->show();
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    }

    void cleanup()
    {
        m_window.reset();
        m_document.reset();
    }

    /// Which controls each tool has, in their order.
    void everyToolHasItsControls()
    {
        const std::pair<ToolType, QString> rows[]{
            {ToolType::Undo, {}},
            {ToolType::Rect, u"rect* circle thickness moreColors"_qs},
            {ToolType::Circle, u"rect circle* thickness moreColors"_qs},
            {ToolType::Arrow, u"arrowStandard* arrowWedge arrowOutline arrowLine arrowDouble thickness moreColors"_qs},
            {ToolType::Line, u"arrowStandard arrowWedge arrowOutline arrowLine* arrowDouble thickness moreColors"_qs},
            {ToolType::Pen, u"thickness moreColors"_qs},
            {ToolType::Marker, u"freehand* markerRect thickness moreColors"_qs},
            {ToolType::Eraser, u"attrHintPill"_qs},
            {ToolType::Sequence, u"sequenceType seqValue sequenceArrow fontSize moreColors"_qs},
            {ToolType::MosaicPen, u"mosaic blur mosaicPen* blockSize"_qs},
            {ToolType::SmartErase, u"eraseSubject* eraseBox"_qs},
            {ToolType::Spotlight, u"rect* circle dim1 dim2* dim3"_qs},
            {ToolType::Watermark, u"watermarkEdit clock watermarkMode opacity fontSize moreColors"_qs},
            {ToolType::Magnifier, u"rect circle* attrValuePill thickness moreColors"_qs},
            {ToolType::Text, u"fontSize textStd* textBorder textBg textRound fontFamily moreColors"_qs}};
        for (const int width : {0, 300}) { // in one line, and as rows
            for (const auto &[tool, controls] : rows) {
                m_bar->setFixedBarWidth(width);
                m_bar->setTool(tool);
                QCOMPARE(controlNames().join(u' '), controls);
                for (const QWidget *control : m_bar->findChildren<QWidget *>()) {
                    if (control->focusPolicy() == Qt::TabFocus || qobject_cast<const QLineEdit *>(control))
                        QVERIFY2(!control->accessibleName().isEmpty(), qPrintable(control->objectName()));
                }
            }
        }
    }

    /// A change goes to the tool and to the selected shape, as one state to go back to.
    void changesReachTheSelectedShape()
    {
        const BaseShape *shape = draw(*m_document, ToolType::Rect);
        m_bar->setTool(ToolType::Rect);
        const auto states = m_document->undoStack().size();
        QSignalSpy changed(m_bar, &AttributeBar::attributesChanged);
        auto *capsule = m_bar->findChild<ui::ThicknessCapsule *>();
        QWheelEvent up({60, 10}, capsule->mapToGlobal(QPointF(60, 10)), {}, {0, 240}, Qt::NoButton, Qt::NoModifier,
                       Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(capsule, &up);
        QCOMPARE(shape->thickness, 5.0);
        QCOMPARE(capsule->value(), 5);
        QCOMPARE(changed.count(), 1);
        QCOMPARE(m_document->undoStack().size(), states + 1);
    }

    /// What a slider passes on its way is shown but is no state to go back to.
    void draggedValuesArePreviews()
    {
        const BaseShape *shape = draw(*m_document, ToolType::Mosaic);
        m_bar->setTool(ToolType::Mosaic);
        const auto states = m_document->undoStack().size();
        QSignalSpy preview(m_bar, &AttributeBar::previewChanged);
        QSignalSpy changed(m_bar, &AttributeBar::attributesChanged);
        auto *slider = m_bar->findChild<ui::ModernSlider *>(QStringLiteral("blockSize"));
        const QPoint start(slider->width() / 2, slider->height() / 2);
        QTest::mousePress(slider, Qt::LeftButton, {}, start);
        for (int x = start.x(); x < slider->width(); x += 4)
            QTest::mouseMove(slider, {x, start.y()});
        QVERIFY(preview.count() > 3);
        QCOMPARE(changed.count(), 0);
        QCOMPARE(m_document->undoStack().size(), states);
        QTest::mouseRelease(slider, Qt::LeftButton, {}, {slider->width() - 1, start.y()});
        QCOMPARE(changed.count(), 1);
        QCOMPARE(m_document->undoStack().size(), states + 1);
        QCOMPARE(m_document->attributes().mosaicStrength, 40.0);
        QVERIFY(shape == m_document->selected());
    }

    /// The host answers a change of the variant at once, from inside the signal of a button.
    void noControlIsRebuiltInsideItsOwnSignal()
    {
        connect(m_bar, &AttributeBar::toolVariantChanged, this, [this](ToolType tool) {
            m_document->setTool(tool);
            m_bar->setTool(tool);
            m_bar->refresh();
        });
        m_document->setTool(ToolType::Rect);
        m_bar->setTool(ToolType::Rect);
        const QPointer<QToolButton> circle = segment("circle");
        connect(circle, &QToolButton::toggled, this, [&] { QVERIFY(circle->isVisible()); });
        circle->click();
        QVERIFY(circle && circle->isVisible());
        QCOMPARE(m_bar->tool(), ToolType::Circle);
        QTRY_VERIFY(segment("circle") != circle);
        QVERIFY(segment("circle")->isChecked());

        m_document->setTool(ToolType::Mosaic);
        m_bar->setTool(ToolType::Mosaic);
        segment("blur")->click();
        QTRY_VERIFY(m_bar->findChild<QWidget *>(QStringLiteral("strength")));
        QVERIFY(!m_bar->findChild<QWidget *>(QStringLiteral("blockSize")));
        QCOMPARE(m_bar->tool(), ToolType::Mosaic);
        segment("mosaicPen")->click();
        QTRY_VERIFY(segment("mosaicPen")->isChecked());
        QCOMPARE(m_document->tool(), ToolType::MosaicPen);
        QCOMPARE(m_document->attributes().mosaicMode, MosaicMode::Blur); // as it was
        segment("mosaic")->click();
        QTRY_VERIFY(segment("mosaic")->isChecked());
        QCOMPARE(m_document->tool(), ToolType::Mosaic);
    }

    void theMarkerSnapsOnlyWhereThereAreLines()
    {
        m_bar->setTool(ToolType::Marker);
        QVERIFY(!m_bar->findChild<QWidget *>(QStringLiteral("snapLine")));
        m_document->setTextLineProvider([] { return QList<QRectF>(); });
        m_bar->refresh();
        m_bar->findChild<QToolButton *>(QStringLiteral("snapLine"))->click();
        QVERIFY(m_document->markerSnapText());
        segment("markerRect")->click();
        QTRY_VERIFY(!m_bar->findChild<QWidget *>(QStringLiteral("snapLine")));
    }

    void numbersAreTyped()
    {
        m_bar->setTool(ToolType::Sequence);
        for (const auto &[typed, next] : {std::pair(u"0"_qs, 1), {u""_qs, 1}, {u"42"_qs, 42}, {u"1000"_qs, 100}}) {
            auto *field = m_bar->findChild<QLineEdit *>(QStringLiteral("seqValue"));
            field->setFocus();
            field->selectAll();
            QTest::keyClick(field, Qt::Key_Delete);
            QTest::keyClicks(field, typed);
            QTest::keyClick(field, Qt::Key_Return);
            QCOMPARE(m_document->sequenceValue(), next);
            QVERIFY(m_window->hasFocus());
            QTRY_COMPARE(m_bar->findChild<QLineEdit *>(QStringLiteral("seqValue"))->text(), QString::number(next));
        }
    }

    /// Nothing that is typed reaches the keys of the window behind.
    void typingStaysInTheBar()
    {
        class KeyCounter final : public QObject
        {
        public:
            int keys = 0;
            bool eventFilter(QObject *, QEvent *event) override
            {
                keys += event->type() == QEvent::KeyPress;
                return false;
            }
        } counter;
        m_window->installEventFilter(&counter);
        m_document->setTool(ToolType::Watermark);
        m_bar->setTool(ToolType::Watermark);
        auto *edit = m_bar->findChild<ui::WatermarkEdit *>();
        edit->setFocus();
        QTest::keyClicks(edit, QStringLiteral("draft "));
        for (const Qt::Key key : {Qt::Key_Up, Qt::Key_F3, Qt::Key_Escape})
            QTest::keyClick(edit, key);
        QCOMPARE(counter.keys, 0);
        QVERIFY(m_window->hasFocus());
        QCOMPARE(m_document->shapes().size(), 1);
        QCOMPARE(m_document->attributes().watermarkText, QStringLiteral("draft "));
        m_document->undo();
        QCOMPARE(m_document->shapes().size(), 0); // one state for all that was typed
    }

    void timeBlocksGoAsAWhole()
    {
        for (const auto &[text, cursor, left] : {std::tuple(u"on {{yyyy}}"_qs, 11, u"on "_qs),
                                                 {u"on {{yyyy}}!"_qs, 7, u"on !"_qs},
                                                 {u"{{dd}}"_qs, 1, u""_qs},
                                                 {u"{{dd"_qs, 4, u"{{d"_qs}}) {
            ui::WatermarkEdit edit;
            edit.setText(text);
            edit.setCursorPosition(cursor);
            QTest::keyClick(&edit, Qt::Key_Backspace);
            QCOMPARE(edit.text(), left);
            edit.undo();
            QCOMPARE(edit.text(), text);
        }
    }

    /// A press on the bar does not end what is typed elsewhere, nor what is typed in the bar.
    void pressesLeaveTheFocusWhereItIs()
    {
        QLineEdit elsewhere(m_window.get());
        elsewhere.move(0, 300);
        elsewhere.show();
        m_document->setTool(ToolType::Watermark);
        m_bar->setTool(ToolType::Watermark);
        m_bar->resize(m_bar->sizeHint());
        m_bar->show();
        for (QWidget *typing :
             {static_cast<QWidget *>(&elsewhere), static_cast<QWidget *>(m_bar->findChild<ui::WatermarkEdit *>())}) {
            typing->setFocus();
            QVERIFY(typing->hasFocus());
            QTest::mouseClick(m_bar, Qt::LeftButton, {}, {3, 3});
            QVERIFY(typing->hasFocus());
            QTest::mouseClick(m_bar->findChild<ui::ModernSlider *>(QStringLiteral("opacity")), Qt::LeftButton);
            QVERIFY(typing->hasFocus());
        }
        QTest::mouseClick(m_bar->findChild<QWidget *>(QStringLiteral("swatch1")), Qt::LeftButton);
        QCOMPARE(m_document->attributes().color, ui::ColorLibrary::instance().colors().value(1));
        m_window->setFocus();
        QTest::mouseClick(m_window.get(), Qt::LeftButton, {}, {5, 390});
        QVERIFY(m_window->hasFocus());
    }

    /// The keyboard alone: Tab walks the controls, and a control keeps the focus when all are made anew.
    void theKeyboardReachesEveryControl()
    {
        m_document->setTool(ToolType::Rect);
        m_bar->setTool(ToolType::Rect);
        m_window->setFocus();
        QTest::keyClick(m_window.get(), Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget(), segment("rect"));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab); // past the group of which one is on
        QCOMPARE(QApplication::focusWidget()->objectName(), QStringLiteral("thickness"));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Right);
        QCOMPARE(m_document->attributes().thickness, 4.0);
        m_bar->refresh();
        QCOMPARE(QApplication::focusWidget()->objectName(), QStringLiteral("thickness"));
        QAccessibleInterface *access = QAccessible::queryAccessibleInterface(QApplication::focusWidget());
        QCOMPARE(access->role(), QAccessible::SpinBox);
        QCOMPARE(access->valueInterface()->currentValue().toInt(), 4);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
        QVERIFY(m_window->hasFocus());
    }

    /// A press outside closes the board; the menu of its field is a window of its own and not outside.
    void theBoardOutlivesTheMenuOfItsField()
    {
        m_bar->setTool(ToolType::Rect);
        m_bar->findChild<QToolButton *>(QStringLiteral("moreColors"))->click();
        QPointer<ui::ColorBoard> board = m_window->findChild<ui::ColorBoard *>();
        QVERIFY(board && board->isVisible());
        auto *field = board->findChild<QLineEdit *>(QStringLiteral("hexEdit"));
        QPointer<QMenu> menu = field->createStandardContextMenu();
        menu->popup(field->mapToGlobal(QPoint()));
        QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(menu->actions().constLast()).center());
        QTRY_VERIFY(!menu || !menu->isVisible());
        delete menu;
        QVERIFY(board && board->isVisible());
        QTest::mouseClick(m_window.get(), Qt::LeftButton, {}, QPoint(2, 2));
        QTRY_VERIFY(!board);
    }

    void closingTheWindowInsideAChangeIsSurvived()
    {
        m_bar->setTool(ToolType::Pen);
        connect(m_bar, &AttributeBar::attributesChanged, this, [this] { m_window.reset(); });
        m_bar->findChild<ui::ThicknessCapsule *>()->setValue(9);
        QVERIFY(!m_window);
        QCOMPARE(m_document->attributes().thickness, 9.0);
    }

    /// Each tool comes back as it was left, also in the next document; tools of one family share it.
    void toolsRememberHowTheyWereSet()
    {
        ToolMemory memory;
        const auto choose = [&memory](ShapeDocument &document, ToolType tool) {
            document.setTool(tool);
            memory.recall(document);
        };
        const auto set = [&memory](ShapeDocument &document, const QString &color, double thickness) {
            document.setColor(color);
            document.setThickness(thickness);
            memory.remember(document);
        };
        choose(*m_document, ToolType::Marker);
        set(*m_document, QStringLiteral("#FFDD00"), 18);
        choose(*m_document, ToolType::Arrow);
        set(*m_document, QStringLiteral("#112233"), 4);
        choose(*m_document, ToolType::Marker);
        QCOMPARE(m_document->attributes().color, QStringLiteral("#FFDD00"));
        choose(*m_document, ToolType::Line);
        QCOMPARE(m_document->attributes().thickness, 4.0);
        m_document->setWatermarkText(QStringLiteral("once"));
        m_document->setMagnifierZoom(5);
        memory.remember(*m_document);
        ShapeDocument next;
        next.setDisplayScale(2);
        memory.begin(next);
        QVERIFY(next.attributes().watermarkText.isEmpty());
        QCOMPARE(next.attributes().magnifierZoom, 5.0);
        QCOMPARE(next.attributes().displayScale, 2.0);
        choose(next, ToolType::Marker);
        QCOMPARE(next.attributes().thickness, 36.0);
    }

private:
    [[nodiscard]] QToolButton *segment(const char *key) const
    {
        for (QToolButton *button : m_bar->findChildren<QToolButton *>()) {
            if (button->property("tavrelSegmentKey").toString() == QLatin1String(key))
                return button;
        }
        return nullptr;
    }

    /// Names of the controls in their order, with a star behind a segment that is on.
    [[nodiscard]] QStringList controlNames() const
    {
        static const QStringList known =
            u"thickness moreColors attrHintPill sequenceType seqValue sequenceArrow fontSize blockSize strength "
            "watermarkEdit clock watermarkMode opacity attrValuePill fontFamily"_qs.split(u' ');
        QStringList names;
        for (const QWidget *control : m_bar->findChildren<QWidget *>()) {
            const QVariant key = control->property("tavrelSegmentKey");
            if (key.isValid())
                names.append(key.toString() + (static_cast<const QToolButton *>(control)->isChecked()
                                                   ? QLatin1String("*")
                                                   : QLatin1String()));
            else if (known.contains(control->objectName()))
                names.append(control->objectName());
        }
        return names;
    }

    std::unique_ptr<ShapeDocument> m_document;
    std::unique_ptr<QWidget> m_window;
    AttributeBar *m_bar = nullptr;
};

TAVREL_TEST_MAIN(QApplication, AttributeBarTest)
#include "test_attribute_bar.moc"
