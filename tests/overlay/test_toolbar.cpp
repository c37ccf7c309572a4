#include "overlay/tool_guide_bubble.h"
#include "overlay/toolbar_widget.h"
#include "support/test_main.h"
#include "ui/tool_tips.h"
#include "ui/toolbar_button.h"

#include <QApplication>
#include <QPointer>
#include <QSignalSpy>

using namespace tavrel;
using namespace tavrel::ui;

namespace {

constexpr QSize kOverlay(1400, 500);

/// Stands for the overlay: notes what reaches it through its children.
class Ground final : public QWidget
{
public:
    int events = 0;

protected:
    void mousePressEvent(QMouseEvent *) override { ++events; }
    void mouseReleaseEvent(QMouseEvent *) override { ++events; }
    void wheelEvent(QWheelEvent *) override { ++events; }
};

} // namespace

class ToolbarTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { qRegisterMetaType<ToolType>(); }

    void init()
    {
        m_ground = std::make_unique<Ground>();
        m_ground->resize(kOverlay);
        m_toolbar = new ToolbarWidget(m_ground.get());
        m_toolbar->move(40, 100);
        m_ground->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_ground.get()));
    }

    void cleanup() { m_ground.reset(); }

    void aClickChoosesAToolAndPutsItAway()
    {
        QSignalSpy selected(m_toolbar, &ToolbarWidget::toolSelected);
        click(ToolType::Pen);
        QCOMPARE(selected.takeFirst().at(0).value<ToolType>(), ToolType::Pen);
        QVERIFY(!button(ToolType::Pen)->isChecked()); // not before its owner says so

        m_toolbar->setCurrentTool(ToolType::Circle); // stands on the button of the rectangle
        QVERIFY(button(ToolType::Rect)->isChecked());
        click(ToolType::Rect);
        QCOMPARE(selected.takeFirst().at(0).value<ToolType>(), ToolType::None);
        QVERIFY(button(ToolType::Rect)->isChecked());

        m_toolbar->setCurrentTool(ToolType::None);
        QVERIFY(!button(ToolType::Rect)->isChecked());
        QVERIFY(selected.isEmpty());
    }

    void actionsFireAndUnavailableOnesDoNot()
    {
        QSignalSpy triggered(m_toolbar, &ToolbarWidget::actionTriggered);
        QSignalSpy selected(m_toolbar, &ToolbarWidget::toolSelected);
        click(ToolType::Undo);
        QCOMPARE(triggered.size(), 0);
        m_toolbar->setHistoryState(true, false);
        for (const ToolType tool : {ToolType::Ocr, ToolType::Record, ToolType::LongScreenshot, ToolType::Undo,
                                    ToolType::Cancel, ToolType::Pin, ToolType::Cloud, ToolType::Save, ToolType::Copy}) {
            click(tool);
            QCOMPARE(triggered.takeFirst().at(0).value<ToolType>(), tool);
            QVERIFY(!button(tool)->isCheckable());
        }
        click(ToolType::Redo);
        QVERIFY(triggered.isEmpty());
        QVERIFY(selected.isEmpty());
        QCOMPARE(m_ground->events, 0); // a click on a disabled button either
    }

    void toolsBehindTheArrowComeOutAtItsClick()
    {
        QSignalSpy changed(m_toolbar, &ToolbarWidget::layoutChanged);
        QSignalSpy config(m_toolbar, &ToolbarWidget::configRequested);
        QVERIFY(m_toolbar->hasHiddenTools());
        QVERIFY(!button(ToolType::Spotlight)->isVisible());
        const int narrow = m_toolbar->width();

        QTest::mouseClick(arrow(), Qt::LeftButton);
        QVERIFY(m_toolbar->isExpanded());
        QCOMPARE(changed.size(), 1);
        QVERIFY(button(ToolType::Spotlight)->isVisible());
        QCOMPARE(button(ToolType::SmartErase)->x(),
                 button(ToolType::LongScreenshot)->geometry().right() + 1); // behind the visible ones
        QCOMPARE(arrow()->x(), button(ToolType::Watermark)->geometry().right() + 1);
        QVERIFY(m_toolbar->width() > narrow);
        QCOMPARE(m_toolbar->expandCentre(), arrow()->mapTo(m_ground.get(), arrow()->rect().center()));

        QTest::mouseClick(arrow(), Qt::LeftButton);
        QCOMPARE(config.size(), 1);
        QVERIFY(m_toolbar->isExpanded());

        ToolbarLayout all = defaultToolbarLayout();
        for (ToolbarItem &item : all)
            item.visible = true;
        m_toolbar->setConfig(all);
        QVERIFY(!arrow()->isVisible());
        QVERIFY(!m_toolbar->hasHiddenTools());
        QCOMPARE(changed.size(), 1); // what its owner does is no news
    }

    void aHiddenToolThatBecomesCurrentExpands()
    {
        m_toolbar->setConfig(withToolHidden(defaultToolbarLayout(), ToolType::Mosaic));
        QSignalSpy changed(m_toolbar, &ToolbarWidget::layoutChanged);
        m_toolbar->setCurrentTool(ToolType::Pen);
        QVERIFY(!m_toolbar->isExpanded());
        m_toolbar->setCurrentTool(ToolType::MosaicPen);
        QVERIFY(m_toolbar->isExpanded());
        QVERIFY(button(ToolType::Mosaic)->isVisible() && button(ToolType::Mosaic)->isChecked());
        QCOMPARE(changed.size(), 1);
        m_toolbar->setCurrentTool(ToolType::Spotlight);
        QCOMPARE(changed.size(), 1);
    }

    void theOrderIsThatOfTheLayout()
    {
        m_toolbar->setConfig(withToolShown(defaultToolbarLayout(), ToolType::Watermark, ToolType::Rect));
        QCOMPARE(button(ToolType::Watermark)->x() + button(ToolType::Watermark)->width(), button(ToolType::Rect)->x());
        // [arrow] 8 | undo redo 4 | cancel pin upload save copy
        QCOMPARE(button(ToolType::Undo)->x(), arrow()->geometry().right() + 1 + 8 + 1);
        QCOMPARE(button(ToolType::Cancel)->x(), button(ToolType::Redo)->geometry().right() + 1 + 4 + 1);
        int right = button(ToolType::Redo)->x();
        for (const ToolType tool : {ToolType::Cancel, ToolType::Pin, ToolType::Cloud, ToolType::Save, ToolType::Copy}) {
            QVERIFY(button(tool)->x() > right);
            right = button(tool)->x();
        }
    }

    void withoutLabelsButtonsAreSmallAndSayTheirName()
    {
        QVERIFY(button(ToolType::Pen)->toolTip().isEmpty());
        QCOMPARE(button(ToolType::Pen)->height(), 44);
        QCOMPARE(button(ToolType::Pen)->width(), button(ToolType::Pen)->property("tavrelTextWidth").toInt());
        m_toolbar->setShowLabels(false);
        for (const ToolbarItem &item : defaultToolbarLayout()) {
            QCOMPARE(button(item.tool)->size(), QSize(30, 30));
            QCOMPARE(button(item.tool)->toolTip(), toolbarText(item.tool));
            QCOMPARE(button(item.tool)->accessibleName(), toolbarText(item.tool));
            QCOMPARE(button(item.tool)->property("tavrelTool").toInt(), static_cast<int>(item.tool));
        }
        QCOMPARE(arrow()->height(), 30);
    }

    void aToolbarWithoutRoomClosesUp()
    {
        m_toolbar->setExpanded(true);
        const QSize roomy = m_toolbar->size();
        const auto fits = [this](int room) {
            m_toolbar->setRoom(room);
            return m_toolbar->width() <= room &&
                   m_toolbar->rect().contains(button(ToolType::Copy)->geometry().adjusted(0, 0, 8, 4));
        };
        QVERIFY(fits(roomy.width()));
        QCOMPARE(m_toolbar->size(), roomy);
        QVERIFY(fits(roomy.width() - 1));
        QCOMPARE(button(ToolType::Copy)->height(), 44); // still with its label
        QVERIFY(fits(720));
        QCOMPARE(button(ToolType::Copy)->size(), QSize(30, 30));
        QCOMPARE(button(ToolType::Copy)->toolTip(), toolbarText(ToolType::Copy));
        QVERIFY(fits(600));
        m_toolbar->setExpanded(false);
        QCOMPARE(button(ToolType::Copy)->size(), QSize(30, 30)); // what fits again is shown again
        m_toolbar->setRoom(roomy.width());
        m_toolbar->setExpanded(true);
        QCOMPARE(m_toolbar->size(), roomy);
    }

    void widthsFollowTheTextWithinBounds_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("least");
        QTest::addColumn<int>("most");
        QTest::newRow("short") << QStringLiteral("I") << 40 << 40;
        QTest::newRow("between") << QStringLiteral("Spotlight") << 41 << 87;
        QTest::newRow("long") << QString(60, u'W') << 88 << 88;
    }

    void widthsFollowTheTextWithinBounds()
    {
        QFETCH(QString, text);
        ToolbarButton *pen = button(ToolType::Pen);
        pen->setLabel(text);
        QFETCH(int, least);
        QFETCH(int, most);
        QVERIFY2(pen->width() >= least && pen->width() <= most, qPrintable(QString::number(pen->width())));
    }

    void theFrameAndTheButtonsDragTheToolbar_data()
    {
        QTest::addColumn<ToolType>("tool");
        QTest::newRow("by the frame") << ToolType::None;
        QTest::newRow("by a tool") << ToolType::Pen;
        QTest::newRow("by an action") << ToolType::Copy;
        QTest::newRow("by a disabled button") << ToolType::Redo;
    }

    void theFrameAndTheButtonsDragTheToolbar()
    {
        QFETCH(ToolType, tool);
        QWidget *grip = tool == ToolType::None ? static_cast<QWidget *>(m_toolbar) : button(tool);
        const QPoint at = tool == ToolType::None ? QPoint(3, 20) : grip->rect().center();
        QSignalSpy dragged(m_toolbar, &ToolbarWidget::dragRequested);
        QSignalSpy selected(m_toolbar, &ToolbarWidget::toolSelected);
        QSignalSpy triggered(m_toolbar, &ToolbarWidget::actionTriggered);
        connect(m_toolbar, &ToolbarWidget::dragRequested, m_toolbar, qOverload<const QPoint &>(&QWidget::move));
        const QPoint start = m_toolbar->pos();
        const QPoint global = grip->mapToGlobal(at);

        QTest::mousePress(grip, Qt::LeftButton, {}, at);
        move(grip, global + QPoint(2, 2));
        QCOMPARE(dragged.size(), 0);
        move(grip, global + QPoint(3, 2));
        move(grip, global + QPoint(60, 33));
        move(grip, global + QPoint(1, 0)); // back: it stays a drag
        QCOMPARE(dragged.size(), 3);
        QCOMPARE(dragged.at(1).at(0).toPoint(), start + QPoint(60, 33));
        QCOMPARE(m_toolbar->pos(), start + QPoint(1, 0));
        QTest::mouseRelease(grip, Qt::LeftButton, {}, grip->mapFromGlobal(global + QPoint(1, 0)));
        QVERIFY(selected.isEmpty() && triggered.isEmpty());
        QCOMPARE(m_ground->events, 0);

        // The next click is a click again.
        QTest::mouseClick(grip, Qt::LeftButton, {}, at);
        QCOMPARE(selected.size() + triggered.size(), tool == ToolType::Pen || tool == ToolType::Copy ? 1 : 0);
    }

    void nothingReachesTheSelectionBelow()
    {
        QTest::mouseClick(m_toolbar, Qt::LeftButton, {}, {3, 20});
        QTest::mouseClick(m_toolbar, Qt::RightButton, {}, {3, 20});
        QTest::mouseClick(button(ToolType::Pen), Qt::RightButton);
        QCOMPARE(m_ground->events, 0);
    }

    void theTipShowsInsideTheWindow()
    {
        m_toolbar->setShowLabels(false);
        auto *tips = m_toolbar->findChild<ToolTips *>();
        hover(button(ToolType::Copy));
        QVERIFY(tips->shownText().isEmpty()); // not at once
        QTRY_COMPARE(tips->shownText(), toolbarText(ToolType::Copy));
        QVERIFY(tip());
        QVERIFY(m_ground->rect().contains(tip()->geometry()));
        QVERIFY(!tip()->geometry().intersects(m_toolbar->geometry()));

        hover(button(ToolType::Copy), QEvent::Leave);
        QVERIFY(!tip());
        hover(button(ToolType::Save)); // the next one needs no patience
        QCOMPARE(tips->shownText(), toolbarText(ToolType::Save));
        QTest::mousePress(button(ToolType::Save), Qt::LeftButton);
        QVERIFY(tips->shownText().isEmpty());
        QTest::mouseRelease(button(ToolType::Save), Qt::LeftButton);
    }

    void aTipLeavesTheBubbleReadable()
    {
        ToolGuideBubble bubble(m_ground.get());
        bubble.setTools(m_toolbar->hiddenTools());
        bubble.pointAt(m_toolbar->expandCentre(), m_toolbar->geometry());
        bubble.show();
        hover(arrow());
        QTRY_VERIFY(tip());
        QVERIFY(!tip()->geometry().intersects(bubble.geometry()));
        QVERIFY(tip()->y() < m_toolbar->y());
        hover(arrow(), QEvent::Leave);
        bubble.hide();
        hover(arrow());
        QVERIFY(tip()->y() > m_toolbar->y());
    }

    void aTipGoesWithItsWindow()
    {
        for (const bool isDeleted : {false, true}) {
            hover(arrow());
            QTRY_VERIFY(tip());
            if (isDeleted)
                m_ground.reset();
            else
                m_ground->hide();
            QVERIFY(isDeleted || !tip());
            if (!isDeleted)
                m_ground->show();
        }
    }

    void aTipStaysInsideItsHost_data()
    {
        QTest::addColumn<QRect>("anchor");
        QTest::addColumn<QRect>("readable");
        QTest::addColumn<QPoint>("expected");
        const QRect none;
        const QRect middle(100, 100, 30, 30);
        QTest::newRow("below") << middle << none << QPoint(74, 136);
        QTest::newRow("above at the bottom") << QRect(100, 260, 30, 30) << none << QPoint(74, 234);
        QTest::newRow("left edge") << QRect(0, 100, 30, 30) << none << QPoint(4, 136);
        QTest::newRow("right edge") << QRect(380, 100, 30, 30) << none << QPoint(316, 136);
        QTest::newRow("no room at all") << QRect(100, -10, 30, 320) << none << QPoint(74, 276);
        QTest::newRow("a panel below") << middle << QRect(150, 150, 90, 90) << QPoint(74, 74);
        QTest::newRow("a panel beside") << middle << QRect(154, 136, 90, 90) << QPoint(74, 136);
        QTest::newRow("panels on both sides") << middle << QRect(100, 0, 30, 300) << QPoint(74, 136);
        QTest::newRow("a panel below, no room above")
            << QRect(100, 20, 30, 30) << QRect(0, 60, 400, 9) << QPoint(74, 56);
        QTest::newRow("no room below, a panel above")
            << QRect(100, 260, 30, 30) << QRect(0, 230, 400, 9) << QPoint(74, 234);
    }

    void aTipStaysInsideItsHost()
    {
        QFETCH(QRect, anchor);
        QFETCH(QRect, readable);
        QTEST(placeTip(anchor, {80, 20}, {400, 300}, readable), "expected");
    }

    void theBubblePointsAtTheArrow_data()
    {
        QTest::addColumn<QPoint>("target");
        QTest::addColumn<QRect>("toolbar");
        QTest::addColumn<QRect>("bar");
        QTest::addColumn<QPoint>("position");
        QTest::addColumn<int>("arrowX");
        QTest::addColumn<bool>("arrowUp");
        const QRect middle(200, 300, 500, 54);
        const QRect none;
        QTest::newRow("below") << QPoint(500, 327) << middle << none << QPoint(342, 360) << 158 << true;
        QTest::newRow("left edge") << QPoint(100, 327) << middle << none << QPoint(6, 360) << 94 << true;
        QTest::newRow("left of the edge") << QPoint(10, 327) << middle << none << QPoint(6, 360) << 16 << true;
        QTest::newRow("right edge") << QPoint(770, 327) << middle << none << QPoint(534, 360) << 236 << true;
        QTest::newRow("right of the edge") << QPoint(795, 327) << middle << none << QPoint(534, 360) << 244 << true;
        QTest::newRow("just fits below") << QPoint(500, 500) << QRect(200, 485, 500, 54) << none << QPoint(342, 545)
                                         << 158 << true;
        QTest::newRow("above") << QPoint(500, 500) << QRect(200, 486, 500, 54) << none << QPoint(342, 431) << 158
                               << false;
        QTest::newRow("no room") << QPoint(500, 30) << QRect(200, 10, 500, 560) << none << QPoint(342, 4) << 158
                                 << false;
        const QRect bar(200, 360, 200, 40);
        QTest::newRow("a bar below") << QPoint(500, 327) << middle << bar << QPoint(342, 245) << 158 << false;
        QTest::newRow("a bar that is shorter") << QPoint(600, 327) << middle << bar << QPoint(442, 360) << 158 << true;
        QTest::newRow("a bar above") << QPoint(500, 327) << middle << bar.translated(0, -100) << QPoint(342, 360) << 158
                                     << true;
        QTest::newRow("a bar below, no room above") << QPoint(500, 77) << middle.translated(0, -250)
                                                    << bar.translated(0, -250) << QPoint(342, 110) << 158 << true;
    }

    void theBubblePointsAtTheArrow()
    {
        QFETCH(QPoint, target);
        QFETCH(QRect, toolbar);
        QFETCH(QRect, bar);
        const GuideBubblePlacement place = placeGuideBubble(target, toolbar, {800, 600}, 49, bar);
        QTEST(place.position, "position");
        QTEST(place.arrowX, "arrowX");
        QTEST(place.arrowUp, "arrowUp");
    }

    void aNarrowOverlayKeepsTheBubbleAtItsLeft()
    {
        QCOMPARE(placeGuideBubble({100, 50}, {0, 0, 200, 54}, {200, 600}, 49).position.x(), 6);
    }

    void onlyTheCrossDismissesTheBubble()
    {
        ToolGuideBubble bubble(m_ground.get());
        bubble.setTools(m_toolbar->hiddenTools());
        QVERIFY(bubble.text().startsWith(QStringLiteral("智能擦除、聚光灯、放大镜、水印 收在这里")));
        bubble.pointAt(m_toolbar->expandCentre(), m_toolbar->geometry());
        QCOMPARE(bubble.width(), 260);
        QVERIFY(bubble.height() >= 43);
        bubble.show();
        QSignalSpy dismissed(&bubble, &ToolGuideBubble::dismissed);
        const int middle = 7 + (bubble.height() - 7) / 2; // of the body, below the arrow
        QTest::mouseClick(&bubble, Qt::LeftButton, {}, {100, middle});
        QTest::mouseClick(&bubble, Qt::LeftButton, {}, {227, middle}); // 4 around the cross and no more
        QTest::mouseClick(&bubble, Qt::RightButton, {}, {242, middle});
        QTest::mousePress(&bubble, Qt::LeftButton, {}, {242, middle});
        QTest::mouseRelease(&bubble, Qt::LeftButton, {}, {100, middle});
        QVERIFY(dismissed.isEmpty());
        QTest::mouseClick(&bubble, Qt::LeftButton, {}, {229, middle});
        QCOMPARE(dismissed.size(), 1);
        QCOMPARE(m_ground->events, 0);
    }

private:
    [[nodiscard]] ToolbarButton *button(ToolType tool) const
    {
        return m_toolbar->findChild<ToolbarButton *>(toolTypeName(tool));
    }
    [[nodiscard]] ToolbarButton *arrow() const
    {
        return m_toolbar->findChild<ToolbarButton *>(QStringLiteral("toolbarExpand"));
    }
    /// The tip that shows; null for none.
    [[nodiscard]] QWidget *tip() const
    {
        const auto tips = m_ground->findChildren<QWidget *>(QStringLiteral("toolTip"), Qt::FindDirectChildrenOnly);
        const auto shown = std::find_if(tips.begin(), tips.end(), [](const QWidget *tip) { return tip->isVisible(); });
        return shown == tips.end() ? nullptr : *shown;
    }
    void click(ToolType tool) { QTest::mouseClick(button(tool), Qt::LeftButton); }

    /// A move to a place on the screen with the left button down, as long as the widget moves along.
    static void move(QWidget *widget, const QPoint &global)
    {
        QMouseEvent event(QEvent::MouseMove, widget->mapFromGlobal(global), global, Qt::NoButton, Qt::LeftButton, {});
        QApplication::sendEvent(widget, &event);
    }

    static void hover(QWidget *widget, QEvent::Type type = QEvent::Enter)
    {
        const QPointF middle(widget->rect().center());
        QEnterEvent entered(middle, middle, QPointF(widget->mapToGlobal(middle)));
        QEvent left(QEvent::Leave);
        QApplication::sendEvent(widget, type == QEvent::Enter ? static_cast<QEvent *>(&entered) : &left);
    }

    std::unique_ptr<Ground> m_ground;
    ToolbarWidget *m_toolbar = nullptr;
};

TAVREL_TEST_MAIN(QApplication, ToolbarTest)
#include "test_toolbar.moc"
