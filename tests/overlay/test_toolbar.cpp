#include "overlay/tool_guide_bubble.h"
#include "overlay/toolbar_widget.h"
#include "overlay_input.h"
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
        int right = -1;
        for (const ToolType tool : {ToolType::Watermark, ToolType::Rect, ToolType::Undo, ToolType::Redo,
                                    ToolType::Cancel, ToolType::Pin, ToolType::Cloud, ToolType::Save, ToolType::Copy}) {
            QVERIFY(button(tool)->x() > right);
            right = button(tool)->geometry().right();
        }
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

    void theFrameAndTheButtonsDragTheToolbar()
    {
        connect(m_toolbar, &ToolbarWidget::dragRequested, m_toolbar, qOverload<const QPoint &>(&QWidget::move));
        for (const ToolType tool :
             {ToolType::None, ToolType::Pen, ToolType::Copy, ToolType::Redo}) { // Redo is disabled
            QWidget *grip = tool == ToolType::None ? static_cast<QWidget *>(m_toolbar) : button(tool);
            const QPoint at = tool == ToolType::None ? QPoint(3, 20) : grip->rect().center();
            QSignalSpy dragged(m_toolbar, &ToolbarWidget::dragRequested);
            QSignalSpy selected(m_toolbar, &ToolbarWidget::toolSelected);
            QSignalSpy triggered(m_toolbar, &ToolbarWidget::actionTriggered);
            const QPoint start = m_toolbar->pos();
            const QPoint global = grip->mapToGlobal(at);
            QTest::mousePress(grip, Qt::LeftButton, {}, at);
            move(grip, global + QPoint(2, 2));
            QCOMPARE(dragged.size(), 0);
            move(grip, global + QPoint(60, 33));
            QCOMPARE(m_toolbar->pos(), start + QPoint(60, 33));
            move(grip, global + QPoint(1, 0)); // back: it stays a drag
            QCOMPARE(m_toolbar->pos(), start + QPoint(1, 0));
            QTest::mouseRelease(grip, Qt::LeftButton, {}, grip->mapFromGlobal(global + QPoint(1, 0)));
            QVERIFY(selected.isEmpty() && triggered.isEmpty());
            QCOMPARE(m_ground->events, 0);
            QTest::mouseClick(grip, Qt::LeftButton, {}, at); // the next click is a click again
            QCOMPARE(selected.size() + triggered.size(), tool == ToolType::Pen || tool == ToolType::Copy ? 1 : 0);
        }
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

    void aTipStaysInsideItsHost()
    {
        const QRect middle(100, 100, 30, 30);
        const std::tuple<QRect, QRect, QPoint> rows[]{
            // anchor, what has to stay readable, place
            {middle, {}, {74, 136}},
            {{100, 260, 30, 30}, {}, {74, 234}},
            {{0, 100, 30, 30}, {}, {4, 136}},
            {{380, 100, 30, 30}, {}, {316, 136}},
            {{100, -10, 30, 320}, {}, {74, 276}}, // no room at all
            {middle, {150, 150, 90, 90}, {74, 74}},
            {middle, {154, 136, 90, 90}, {74, 136}}, // beside it
            {middle, {100, 0, 30, 300}, {74, 136}},  // on both sides
            {{100, 20, 30, 30}, {0, 60, 400, 9}, {74, 56}},
            {{100, 260, 30, 30}, {0, 230, 400, 9}, {74, 234}},
        };
        for (const auto &[anchor, readable, expected] : rows)
            QCOMPARE(placeTip(anchor, {80, 20}, {400, 300}, readable), expected);
    }

    void theBubblePointsAtTheArrow()
    {
        const QRect middle(200, 300, 500, 54);
        const QRect bar(200, 360, 200, 40);
        const struct
        {
            QPoint target;
            QRect toolbar;
            QRect bar;
            QPoint position;
            int arrowX;
            bool arrowUp;
        } rows[]{
            {{500, 327}, middle, {}, {342, 360}, 158, true},
            {{10, 327}, middle, {}, {6, 360}, 16, true},
            {{795, 327}, middle, {}, {534, 360}, 244, true},
            {{500, 500}, {200, 485, 500, 54}, {}, {342, 545}, 158, true}, // just fits below
            {{500, 500}, {200, 486, 500, 54}, {}, {342, 431}, 158, false},
            {{500, 30}, {200, 10, 500, 560}, {}, {342, 4}, 158, false}, // no room
            {{500, 327}, middle, bar, {342, 245}, 158, false},
            {{600, 327}, middle, bar, {442, 360}, 158, true}, // the bar is shorter
            {{500, 327}, middle, bar.translated(0, -100), {342, 360}, 158, true},
            {{500, 77}, middle.translated(0, -250), bar.translated(0, -250), {342, 110}, 158, true}, // no room above
        };
        for (const auto &row : rows) {
            const GuideBubblePlacement place = placeGuideBubble(row.target, row.toolbar, {800, 600}, 49, row.bar);
            QCOMPARE(place.position, row.position);
            QCOMPARE(place.arrowX, row.arrowX);
            QCOMPARE(place.arrowUp, row.arrowUp);
        }
    }

    void onlyTheCrossDismissesTheBubble()
    {
        ToolGuideBubble bubble(m_ground.get());
        bubble.setTools(m_toolbar->hiddenTools());
        bubble.pointAt(m_toolbar->expandCentre(), m_toolbar->geometry());
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
