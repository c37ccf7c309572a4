#include "support/test_main.h"
#include "ui/modern_slider.h"
#include "ui/position_picker.h"
#include "ui/segmented_control.h"
#include "ui/toggle_switch.h"

#include <QAccessible>
#include <QApplication>
#include <QSignalSpy>
#include <QWheelEvent>

#include <cstdlib>

using namespace tavrel;
using edit::BackgroundPosition;
using ui::ModernSlider;
using ui::PositionPicker;
using ui::SegmentedControl;
using ui::ToggleSwitch;

Q_DECLARE_METATYPE(tavrel::edit::BackgroundPosition)

class ControlsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_window = std::make_unique<QWidget>();
        m_window->resize(400, 300);
        m_window->show();
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    }

    void cleanup() { m_window.reset(); }

    void aSliderGoesToThePointer()
    {
        auto *slider = add<ModernSlider>();
        slider->setRange(10, 110);
        slider->setValue(77);
        slider->setGeometry(0, 0, 218, 22);
        QSignalSpy released(slider, &ModernSlider::sliderReleased);
        for (const auto &[x, value] : {std::pair(0, 10), {9, 10}, {109, 60}, {217, 110}}) {
            QTest::mouseClick(slider, Qt::LeftButton, {}, {x, 11});
            QCOMPARE(slider->value(), value);
        }
        released.clear();
        QTest::mousePress(slider, Qt::LeftButton, {}, {9, 11});
        QVERIFY(slider->isSliderDown());
        QTest::mouseMove(slider, {109, 11});
        QCOMPARE(slider->value(), 60);
        QTest::mouseRelease(slider, Qt::LeftButton, {}, {109, 11});
        QVERIFY(!slider->isSliderDown());
        QCOMPARE(released.count(), 1);
        QTest::mouseMove(slider, {0, 11});
        QCOMPARE(slider->value(), 60);
        QVERIFY(!slider->hasFocus()); // a click does not take it
        QWheelEvent wheel({5, 5}, slider->mapToGlobal(QPointF(5, 5)), {}, {0, 120}, Qt::NoButton, Qt::NoModifier,
                          Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(slider, &wheel);
        QCOMPARE(slider->value(), 60);
        slider->setFocus(Qt::TabFocusReason);
        QTest::keyClick(slider, Qt::Key_Right);
        QCOMPARE(slider->value(), 61);
        QTest::keyClick(slider, Qt::Key_Home);
        QCOMPARE(slider->value(), 10);
    }

    // The release of a control that is hidden or disabled under the pointer goes elsewhere.
    void aDragEndsWithItsControl()
    {
        for (const bool hides : {true, false}) {
            auto *slider = add<ModernSlider>();
            QSignalSpy released(slider, &ModernSlider::sliderReleased);
            QTest::mousePress(slider, Qt::LeftButton);
            hides ? slider->hide() : slider->setEnabled(false);
            QCOMPARE(released.count(), 1);
            QVERIFY(!slider->isSliderDown());
            slider->hide();
        }
    }

    void aSwitchGlidesWhileItIsSeen()
    {
        auto *shown = add<ToggleSwitch>();
        shown->setChecked(true);
        QVERIFY(shown->position() < 1);
        QTRY_COMPARE(shown->position(), 1.0);
        shown->click();
        QVERIFY(!shown->isChecked());
        QVERIFY(shown->position() > 0); // from where it stands
        shown->click();
        QTRY_COMPARE(shown->position(), 1.0);

        ToggleSwitch hidden(ui::lightTheme());
        hidden.setChecked(true);
        QCOMPARE(hidden.position(), 1.0);

        QAccessibleInterface *access = QAccessible::queryAccessibleInterface(shown);
        QCOMPARE(access->role(), QAccessible::CheckBox);
        QVERIFY(access->state().checked);
        access->actionInterface()->doAction(QAccessibleActionInterface::toggleAction());
        QVERIFY(!shown->isChecked());
        QTest::keyClick(shown, Qt::Key_Space);
        QVERIFY(shown->isChecked());
    }

    void aSegmentIsChosen()
    {
        auto *control = add<SegmentedControl>();
        control->setGeometry(0, 0, 306, 34);
        control->setItems({{.text = QStringLiteral("one"), .tip = QStringLiteral("first")},
                           {.text = QStringLiteral("two")},
                           {.glyph = QStringLiteral("ed_plus"), .tip = QStringLiteral("third")}});
        QSignalSpy changed(control, &SegmentedControl::currentChanged);
        const auto click = [control](int x) { QTest::mouseClick(control, Qt::LeftButton, {}, {x, 17}); };
        click(50);
        QCOMPARE(changed.count(), 0); // it is that one already
        click(150);
        QCOMPARE(control->current(), 1);
        QVERIFY(control->animatedIndex() < 1);
        click(250); // while the thumb is under way
        QVERIFY(control->animatedIndex() < 1);
        QTRY_COMPARE(control->animatedIndex(), 2.0);
        QCOMPARE(changed.count(), 2);
        click(1); // the rim belongs to the first
        QCOMPARE(control->current(), 0);
        click(305);
        QTest::mouseClick(control, Qt::RightButton, {}, {150, 17});
        QCOMPARE(changed.count(), 3);
        QTest::keyClick(control, Qt::Key_End);
        QCOMPARE(control->current(), 2);
        QCOMPARE(changed.count(), 4);

        QAccessibleInterface *access = QAccessible::queryAccessibleInterface(control);
        QCOMPARE(access->childCount(), 3);
        QCOMPARE(access->child(2)->text(QAccessible::Name), QStringLiteral("third"));
        access->child(0)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        QCOMPARE(control->current(), 0);

        QAccessibleInterface *gone = access->child(1);
        control->setItems({});
        QCOMPARE(control->current(), -1);
        QVERIFY(!gone->isValid() && gone->text(QAccessible::Name).isEmpty());
        click(50);
        QTest::keyClick(control, Qt::Key_End);
        control->grab();
        QCOMPARE(changed.count(), 5);
    }

    void aPositionIsPickedAndDragged()
    {
        auto *picker = add<PositionPicker>();
        picker->setGeometry(0, 0, 200, 104);
        QSignalSpy changed(picker, &PositionPicker::positionChanged);
        const auto last = [&changed] {
            const QList<QVariant> &call = changed.last();
            return std::make_tuple(call[0].value<BackgroundPosition>(), call[1].toDouble(), call[2].toDouble(),
                                   call[3].toBool());
        };
        QCOMPARE(picker->box(), QRectF(60, 30, 80, 44));
        QTest::mouseClick(picker, Qt::LeftButton, {}, {199, 103});
        QCOMPARE(last(), std::make_tuple(BackgroundPosition::BottomRight, 0.5, 0.5, true));
        QCOMPARE(picker->box(), QRectF(120, 60, 80, 44));
        QTest::mouseClick(picker, Qt::LeftButton, {}, {100, 40});
        QCOMPARE(last(), std::make_tuple(BackgroundPosition::Center, 0.5, 0.5, true));

        QTest::mousePress(picker, Qt::LeftButton, {}, {100, 50});
        QTest::mouseMove(picker, {-500, 900});
        QCOMPARE(last(), std::make_tuple(BackgroundPosition::Custom, 0.0, 1.0, false));
        QTest::mouseRelease(picker, Qt::LeftButton, {}, {-500, 900});
        QCOMPARE(last(), std::make_tuple(BackgroundPosition::Custom, 0.0, 1.0, true));
        QTest::keyClick(picker, Qt::Key_Right);
        QCOMPARE(std::get<0>(last()), BackgroundPosition::Bottom);
        QTest::keyClick(picker, Qt::Key_Up);
        QCOMPARE(std::get<0>(last()), BackgroundPosition::Center);
    }

private:
    template <typename Control>
    Control *add()
    {
        auto *control = new Control(ui::lightTheme(), m_window.get());
        control->show();
        return control;
    }

    std::unique_ptr<QWidget> m_window;
};

TAVREL_TEST_MAIN(QApplication, ControlsTest)
#include "test_controls.moc"
