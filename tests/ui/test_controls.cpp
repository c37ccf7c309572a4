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

    void aSliderGoesToThePointer_data()
    {
        QTest::addColumn<int>("x");
        QTest::addColumn<int>("value");
        QTest::newRow("left edge") << 0 << 10;
        QTest::newRow("start of the track") << 9 << 10;
        QTest::newRow("middle") << 109 << 60;
        QTest::newRow("end of the track") << 209 << 110;
        QTest::newRow("right edge") << 217 << 110;
    }

    void aSliderGoesToThePointer()
    {
        QFETCH(int, x);
        QFETCH(int, value);
        auto *slider = add<ModernSlider>();
        slider->setRange(10, 110);
        slider->setValue(77);
        slider->setGeometry(0, 0, 218, 22);
        QSignalSpy released(slider, &ModernSlider::sliderReleased);
        QTest::mousePress(slider, Qt::LeftButton, {}, {x, 11});
        QVERIFY(slider->isSliderDown());
        QCOMPARE(slider->value(), value);
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
    void aDragEndsWithItsControl_data()
    {
        QTest::addColumn<bool>("hides");
        QTest::newRow("hidden") << true;
        QTest::newRow("disabled") << false;
    }

    void aDragEndsWithItsControl()
    {
        QFETCH(bool, hides);
        auto *slider = add<ModernSlider>();
        auto *picker = add<PositionPicker>();
        picker->setGeometry(0, 50, 200, 104);
        QSignalSpy released(slider, &ModernSlider::sliderReleased);
        QSignalSpy changed(picker, &PositionPicker::positionChanged);
        const auto takeAway = [hides](QWidget *control) {
            hides ? control->hide() : control->setEnabled(false);
            control->show();
            control->setEnabled(true);
        };
        QTest::mousePress(slider, Qt::LeftButton);
        takeAway(slider);
        QCOMPARE(released.count(), 1);
        QVERIFY(!slider->isSliderDown());
        QTest::mousePress(picker, Qt::LeftButton, {}, {100, 50});
        QTest::mouseMove(picker, {110, 50});
        takeAway(picker);
        QCOMPARE(changed.count(), 2);
        QVERIFY(changed.last()[3].toBool());
        QTest::mouseMove(picker, {120, 50});
        QCOMPARE(changed.count(), 2);
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
        QTest::mouseMove(control, {250, 17});
        QTRY_COMPARE(control->toolTip(), QStringLiteral("third"));
        QTest::mouseMove(control, {150, 17});
        QTRY_VERIFY(control->toolTip().isEmpty());

        control->setCurrent(7);
        QCOMPARE(control->current(), 2);
        control->setCurrent(-5);
        QCOMPARE(control->current(), -1);
        QTest::keyClick(control, Qt::Key_Right);
        QCOMPARE(control->current(), 0);
        QTest::keyClick(control, Qt::Key_Left);
        QTest::keyClick(control, Qt::Key_End);
        QCOMPARE(control->current(), 2);
        QCOMPARE(changed.count(), 5);

        QAccessibleInterface *access = QAccessible::queryAccessibleInterface(control);
        QCOMPARE(access->role(), QAccessible::PageTabList);
        QCOMPARE(access->childCount(), 3);
        QCOMPARE(access->child(0)->text(QAccessible::Name), QStringLiteral("one"));
        QCOMPARE(access->child(2)->text(QAccessible::Name), QStringLiteral("third"));
        QCOMPARE(access->text(QAccessible::Value), QStringLiteral("third"));
        QVERIFY(access->child(2)->state().selected);
        access->child(0)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        QCOMPARE(control->current(), 0);

        QAccessibleInterface *gone = access->child(1);
        control->setItems({});
        QCOMPARE(control->current(), -1);
        QVERIFY(!gone->isValid() && gone->text(QAccessible::Name).isEmpty());
        click(50);
        QTest::keyClick(control, Qt::Key_End);
        control->grab();
        QCOMPARE(changed.count(), 6);
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

        // So small a move is shown, but is no change.
        changed.clear();
        QTest::mousePress(picker, Qt::LeftButton, {}, {100, 50});
        QTest::mouseMove(picker, {101, 51});
        QTest::mouseRelease(picker, Qt::LeftButton, {}, {101, 51});
        QCOMPARE(changed.count(), 1);
        QVERIFY(!std::get<3>(last()));

        QTest::mousePress(picker, Qt::LeftButton, {}, {100, 50});
        QTest::mouseMove(picker, {-500, 900});
        QCOMPARE(last(), std::make_tuple(BackgroundPosition::Custom, 0.0, 1.0, false));
        QTest::mouseRelease(picker, Qt::LeftButton, {}, {-500, 900});
        QCOMPARE(last(), std::make_tuple(BackgroundPosition::Custom, 0.0, 1.0, true));
        QTest::keyClick(picker, Qt::Key_Right);
        QCOMPARE(std::get<0>(last()), BackgroundPosition::Bottom);
        QTest::keyClick(picker, Qt::Key_Up);
        QCOMPARE(std::get<0>(last()), BackgroundPosition::Center);

        const auto calls = changed.count();
        picker->set(BackgroundPosition::Custom, 0.25, 0.75);
        QCOMPARE(changed.count(), calls);
        QCOMPARE(picker->box().topLeft(), QPointF(30, 45));
        QAccessibleInterface *access = QAccessible::queryAccessibleInterface(picker);
        QVERIFY(!access->text(QAccessible::Name).isEmpty() && !access->text(QAccessible::Value).isEmpty());
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
