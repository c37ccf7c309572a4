#include "app/capture_flow.h"
#include "app/user_notices.h"
#include "overlay/capture_overlay.h"
#include "overlay/long_capture_mode.h"
#include "platform/unsupported/unsupported_services.h"
#include "settings/settings_store.h"
#include "support/memory_history.h"
#include "support/test_main.h"

#include <QApplication>
#include <QSignalSpy>
#include <QTimer>
#include <QWindow>

using namespace tavrel;
using Action = CaptureOutcome::Action;

namespace {

/// Delivers what it was told to, on the next turn of the loop.
class FakeCapturer final : public platform::IScreenCapturer
{
public:
    int captureAccess() const override { return access; }
    void requestCaptureAccess() override { ++accessRequests; }
    void capture(const platform::CaptureOptions &asked, QObject *context, Done done) override
    {
        ++grabs;
        options = asked;
        QTimer::singleShot(asked.excludeOwnWindows ? frameLagMs : 0, this,
                           [this, context = QPointer(context), done = std::move(done), answer = result] {
                               if (context)
                                   done(answer);
                               ++answers;
                           });
    }

    int access = Granted;
    int accessRequests = 0;
    int frameLagMs = 0; ///< what a picture behind windows of the program takes longer
    int grabs = 0;
    int answers = 0;
    platform::CaptureOptions options;
    platform::CaptureResult result;
};

class Notices final : public IUserNotices
{
public:
    void show(const QString &title, const QString &text, Kind, std::chrono::milliseconds) override
    {
        shown.append(title + u'|' + text);
    }
    QStringList shown;
};

platform::CapturedDisplay display(quint32 id, const QRect &geometry, double ratio = 1.0)
{
    platform::CapturedDisplay captured;
    captured.id = id;
    captured.name = QStringLiteral("display %1").arg(id);
    captured.geometry = geometry;
    captured.devicePixelRatio = ratio;
    captured.image = QImage(geometry.size() * ratio, QImage::Format_ARGB32_Premultiplied);
    captured.image.fill(QColor(10, 20, static_cast<int>(id)));
    captured.image.setDevicePixelRatio(ratio);
    return captured;
}

void drag(QWidget *widget, const QPoint &from, const QPoint &to)
{
    QTest::mousePress(widget, Qt::LeftButton, {}, from);
    QTest::mouseMove(widget, (from + to) / 2);
    QTest::mouseMove(widget, to);
    QTest::mouseRelease(widget, Qt::LeftButton, {}, to);
}

} // namespace

class CaptureFlowTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_settings = std::make_unique<SettingsStore>(m_folder->filePath(QStringLiteral("s.ini")));
        m_capturer = std::make_unique<FakeCapturer>();
        m_capturer->result.displays = {display(1, {0, 0, 400, 300}), display(2, {400, 0, 300, 200}, 2.0)};
        m_records = std::make_unique<MemoryHistory>();
        m_notices = std::make_unique<Notices>();
        m_cursor = QPoint(10, 10);
        m_flow = std::make_unique<CaptureFlow>(
            CaptureFlow::Services{*m_capturer, platform::Unsupported::windowController(), nullptr, *m_settings,
                                  *m_records, *m_notices, [this] { return m_cursor; }});
        m_finished.clear();
        for (const Action action : {Action::Copy, Action::Save}) {
            m_flow->setReceiver(action, [this](const CaptureFlow::Finished &finished) {
                QVERIFY(!m_flow->isActive());
                m_records->events.append(QStringLiteral("taken"));
                m_finished.append(finished);
            });
        }
    }

    void cleanup() { m_flow.reset(); }

    void opensOnTheDisplayUnderThePointer_data()
    {
        QTest::addColumn<QPoint>("cursor");
        QTest::addColumn<QSize>("size");
        QTest::newRow("first") << QPoint(399, 10) << QSize(400, 300);
        QTest::newRow("second") << QPoint(400, 10) << QSize(300, 200);
        QTest::newRow("nowhere") << QPoint(5000, 5000) << QSize(400, 300);
    }

    void opensOnTheDisplayUnderThePointer()
    {
        QFETCH(QPoint, cursor);
        QFETCH(QSize, size);
        m_cursor = cursor;
        m_flow->startCapture();
        QTRY_VERIFY(m_flow->overlay());
        QCOMPARE(m_flow->overlay()->size(), size);
    }

    void aSecondRequestDuringASessionDoesNothing()
    {
        m_flow->startCapture();
        m_flow->startCapture();
        QTRY_VERIFY(m_flow->overlay());
        m_flow->startCapture();
        QCOMPARE(m_capturer->grabs, 1);
        QVERIFY(!m_capturer->options.excludeOwnWindows);
    }

    void aResultIsRecordedAndLeavesAfterTheSession()
    {
        m_cursor = QPoint(450, 10);
        QStringList &order = m_records->events;
        connect(m_flow.get(), &CaptureFlow::sessionClosed, this, [&order] { order.append(QStringLiteral("closed")); });
        connect(m_flow.get(), &CaptureFlow::idleReached, this, [&order] { order.append(QStringLiteral("idle")); });
        m_flow->startCapture();
        QTRY_VERIFY(m_flow->overlay());
        QPointer<ui::CaptureOverlay> overlay = m_flow->overlay();
        drag(overlay, {20, 20}, {120, 70});
        QTest::keyClick(overlay, Qt::Key_Return);
        QVERIFY(m_finished.isEmpty() && m_flow->isFinishing()); // the picture is made beside the program
        QTRY_COMPARE(m_finished.size(), 1);
        QCOMPARE(order.join(u' '), QStringLiteral("closed idle add:copy:200 taken"));
        const QImage &copied = m_finished.first().image;
        QCOMPARE(copied.size(), QSize(200, 100));
        QCOMPARE(copied.devicePixelRatio(), 2.0);
        QCOMPARE(copied.pixelColor(5, 5), QColor(10, 20, 2));
        QCOMPARE(m_finished.first().record, m_records->order.first());
        QCOMPARE(m_records->entries.first().snapshot.selection, QRectF(20, 20, 100, 50));
        QTRY_VERIFY(!overlay);
    }

    void nothingIsRecordedWhenTheUserDoesNotWantIt()
    {
        SettingsConfig config = m_settings->config();
        config.saveHistory = false;
        m_settings->update(config);
        m_flow->startCapture();
        QTRY_VERIFY(m_flow->overlay());
        drag(m_flow->overlay(), {20, 20}, {120, 70});
        QTest::keyClick(m_flow->overlay(), Qt::Key_S, Qt::ControlModifier);
        QTRY_COMPARE(m_finished.size(), 1);
        QVERIFY(m_finished.first().record.isEmpty() && m_records->entries.isEmpty());
    }

    /// A box that takes seconds holds up neither the window nor the next capture, and comes after both all the same.
    void aLargeSmartEraseHoldsNobodyUp()
    {
        platform::CapturedDisplay large = display(1, {0, 0, 1600, 1200});
        for (int y = 0; y < 1200; ++y) { // grain, which takes the long way
            for (int x = 0; x < 1600; ++x)
                large.image.setPixel(x, y, qRgb((x * 37 + y * 91) % 251, (x * 11) % 241, (y * 7 + x * x) % 239));
        }
        m_capturer->result.displays = {large};
        QSignalSpy lasting(m_flow.get(), &CaptureFlow::lastingChanged);
        m_flow->startCapture();
        QTRY_VERIFY(m_flow->overlay());
        ui::CaptureOverlay *overlay = m_flow->overlay();
        overlay->setSelectionRect(overlay->rect());
        overlay->setTool(ToolType::SmartErase);
        drag(overlay, {200, 200}, {1100, 800});
        overlay->setTool(ToolType::None);
        QTest::keyClick(overlay, Qt::Key_Return);
        QVERIFY(!m_flow->isActive() && m_flow->isFinishing());

        m_capturer->result.displays = {display(1, {0, 0, 400, 300})};
        m_flow->startCapture();
        QTRY_VERIFY(m_flow->overlay());
        drag(m_flow->overlay(), {20, 20}, {120, 70});
        QTest::keyClick(m_flow->overlay(), Qt::Key_Return);
        QTRY_COMPARE(m_finished.size(), 1);
        QCOMPARE(m_finished.first().image.size(), QSize(100, 50));
        // Both are kept; the clipboard stays with what was copied last.
        QTRY_VERIFY_WITH_TIMEOUT(!m_flow->isFinishing(), 250000); // sanitizers take their time
        QCOMPARE(m_records->order.size(), 2);
        QCOMPARE(m_records->entries.value(m_records->order.first()).rendered.size(), QSize(1600, 1200));
        QCOMPARE(m_finished.size(), 1);
        QCOMPARE(lasting.count() % 2, 0); // a fast machine needs no card; one that came has gone
    }

    /// A save may ask for its place; no dialog comes up behind an overlay and takes the keyboard from it.
    void whatMayOpenAWindowWaitsForTheSession()
    {
        m_flow->startCapture();
        QTRY_VERIFY(m_flow->overlay());
        drag(m_flow->overlay(), {20, 20}, {120, 70});
        QTest::keyClick(m_flow->overlay(), Qt::Key_S, Qt::ControlModifier);
        m_flow->startCapture();
        QTRY_VERIFY(m_flow->overlay() && !m_flow->isFinishing());
        QVERIFY(m_finished.isEmpty());
        QTest::keyClick(m_flow->overlay(), Qt::Key_Escape);
        QTRY_COMPARE(m_finished.size(), 1);
    }

    void aRefusedOrFailedGrabLeavesTheProgramIdle()
    {
        QSignalSpy refused(m_flow.get(), &CaptureFlow::accessRefused);
        m_capturer->access = platform::IScreenCapturer::Denied;
        m_flow->startCapture();
        QCOMPARE(refused.count(), 1);
        QCOMPARE(m_capturer->accessRequests, 1);
        QVERIFY(!m_flow->isActive());

        m_capturer->access = platform::IScreenCapturer::Granted;
        m_capturer->result.error = QStringLiteral("gone");
        QTest::ignoreMessage(QtWarningMsg, "抓屏失败：gone");
        m_flow->startCapture();
        QTRY_COMPARE(m_notices->shown, QStringList{QStringLiteral("截图失败|gone")});
        QVERIFY(!m_flow->isActive());

        m_capturer->result.error.clear();
        m_flow->startCapture();
        QTRY_VERIFY(m_flow->overlay());
    }

    void aSessionClosedBeforeItsPictureComesStaysClosed()
    {
        QSignalSpy idle(m_flow.get(), &CaptureFlow::idleReached);
        m_flow->startCapture();
        m_flow->closeSession();
        QCOMPARE(idle.count(), 1);
        QTRY_COMPARE(m_capturer->answers, 1);
        QVERIFY(!m_flow->overlay());
    }

    void onlyAnApplicationModalWidgetIsComplainedAbout_data()
    {
        QTest::addColumn<Qt::WindowModality>("modality");
        QTest::newRow("application") << Qt::ApplicationModal;
        QTest::newRow("window") << Qt::WindowModal;
    }

    void onlyAnApplicationModalWidgetIsComplainedAbout()
    {
        QFETCH(Qt::WindowModality, modality);
        QWidget owner;
        owner.show();
        QWidget box(&owner, Qt::Dialog);
        box.setWindowModality(modality);
        box.show();
        const bool complains = modality == Qt::ApplicationModal;
        if (complains) {
            for (int i = 0; i < 2; ++i)
                QTest::ignoreMessage(QtWarningMsg, "出现了应用级模态框（应改用 ui::dialogs）：QWidget");
        } else {
            QTest::failOnWarning(QRegularExpression(QStringLiteral("应用级模态框")));
        }
        m_flow->startCapture();
        QTRY_VERIFY(m_flow->overlay());
        QCOMPARE(m_flow->overlay()->windowHandle()->transientParent(), complains ? box.windowHandle() : nullptr);
    }

    void anOverlayThatVanishesEndsItsSession()
    {
        QSignalSpy idle(m_flow.get(), &CaptureFlow::idleReached);
        m_flow->startCapture();
        QTRY_VERIFY(m_flow->overlay());
        QPointer<ui::CaptureOverlay> first = m_flow->overlay();
        m_flow->closeSession();
        // The old overlay goes down while the next session waits for its picture: that one is not touched.
        m_flow->startCapture();
        QTRY_VERIFY(!first);
        QTRY_VERIFY(m_flow->overlay());
        QCOMPARE(idle.count(), 1);
        delete m_flow->overlay();
        QVERIFY(!m_flow->isActive());
        QCOMPARE(idle.count(), 2);
    }

    void aDisplayThatIsGoneByNowStillGetsItsOverlay()
    {
        m_capturer->result.displays = {display(7, {9000, 9000, 200, 100})};
        m_flow->startCapture();
        QTRY_VERIFY(m_flow->overlay());
        QTest::keyClick(m_flow->overlay(), Qt::Key_Escape);
        QVERIFY(!m_flow->isActive());
    }

    void theHistoryCanBeWalkedFromTheOverlay()
    {
        HistoryEntry entry;
        m_records->add(entry); // its picture is missing
        entry.snapshot.image = QImage(50, 40, QImage::Format_ARGB32_Premultiplied);
        entry.snapshot.image.fill(Qt::green);
        const QString record = m_records->add(entry);
        m_flow->startCapture();
        QTRY_VERIFY(m_flow->overlay());
        const auto shown = [this] { return m_flow->overlay()->snapshot().image.size(); };
        QTest::keyClick(m_flow->overlay(), Qt::Key_Comma);
        QTRY_COMPARE(shown(), QSize(50, 40));
        QTest::keyClick(m_flow->overlay(), Qt::Key_Comma);
        QTRY_COMPARE(m_notices->shown.size(), 1);
        QCOMPARE(shown(), QSize(50, 40));
        QTest::keyClick(m_flow->overlay(), Qt::Key_Period);
        QTRY_COMPARE(shown(), QSize(400, 300));
        QTest::keyClick(m_flow->overlay(), Qt::Key_Comma);
        QTRY_COMPARE(shown(), QSize(50, 40));
        // Its result is a change of that record.
        drag(m_flow->overlay(), {180, 135}, {200, 150});
        QTest::keyClick(m_flow->overlay(), Qt::Key_Return);
        QTRY_COMPARE(m_finished.size(), 1);
        QCOMPARE(m_finished.first().record, record);
        QCOMPARE(m_records->entries.value(record).snapshot.selection.size(), QSizeF(20, 15));
        QCOMPARE(m_records->order.size(), 2);
    }

    void manySessionsLeaveNothingBehind()
    {
        for (int i = 0; i < 20; ++i) {
            m_flow->startCapture();
            QTRY_VERIFY(m_flow->overlay());
            QPointer<ui::CaptureOverlay> overlay = m_flow->overlay();
            QTest::keyClick(overlay, Qt::Key_Escape);
            QTRY_VERIFY(!overlay);
        }
        QVERIFY(QApplication::topLevelWidgets().isEmpty());
    }

    /// One grab at a time, none of our windows in it, and an answer that comes too late is nobody's.
    void aScrollingCaptureGetsItsFrames()
    {
        m_capturer->result.displays = {display(1, {0, 0, 400, 300})};
        m_flow->startLongCapture();
        QTRY_VERIFY(m_flow->overlay());
        QVERIFY(!m_flow->overlay()->isLongActive()); // not before there is a selection
        const int before = m_capturer->grabs;
        drag(m_flow->overlay(), {20, 20}, {320, 260});
        QTRY_VERIFY(m_flow->overlay()->isLongActive());
        QCOMPARE(m_capturer->grabs, before + 1); // the first one at once
        QVERIFY(m_capturer->options.excludeOwnWindows && !m_capturer->options.includeCursor);
        QTRY_VERIFY(m_capturer->grabs >= before + 3);
        m_flow->overlay()->finishLongMode(true);
        QCoreApplication::processEvents();
        const int after = m_capturer->grabs;
        QVERIFY(m_flow->overlay() && m_flow->isActive());
        QTest::qWait(0);
        QVERIFY(m_flow->overlay()->startLongMode());
        QCOMPARE(m_capturer->grabs, after + 1);
        m_flow->closeSession(); // with a grab on its way
        m_flow->startCapture();
        QTRY_VERIFY(m_flow->overlay());
        QVERIFY(!m_flow->overlay()->isLongActive());
        QCOMPARE(m_capturer->grabs, after + 2);
    }

    /// The last frame asked for is still on its way when the next capture begins, and comes after its picture.
    void aCaptureRightAfterAScrollingOneShowsTheScreen()
    {
        m_capturer->result.displays = {display(1, {0, 0, 400, 300})};
        m_flow->startCapture();
        QTRY_VERIFY(m_flow->overlay());
        drag(m_flow->overlay(), {20, 20}, {320, 260});
        m_capturer->frameLagMs = 20;
        QVERIFY(m_flow->overlay()->startLongMode());
        m_flow->closeSession();
        m_capturer->result.displays.first().image.fill(Qt::white);
        m_flow->startCapture();
        QTRY_VERIFY(m_flow->overlay());
        QCOMPARE(m_flow->overlay()->snapshot().image.pixelColor(0, 0), QColor(Qt::white));
    }

    /// A grab that fails may be chance; when no picture of the display comes any more, it is told.
    void aScrollingCaptureWithoutFramesSaysSo()
    {
        m_capturer->result.displays = {display(1, {0, 0, 400, 300})};
        m_flow->startCapture();
        QTRY_VERIFY(m_flow->overlay());
        drag(m_flow->overlay(), {20, 20}, {320, 260});
        QSignalSpy troubled(m_flow->overlay()->findChild<ui::LongCaptureMode *>(), &ui::LongCaptureMode::troubled);
        platform::CaptureResult failed;
        failed.error = QStringLiteral("no picture");
        platform::CaptureResult other;
        other.displays = {display(2, {0, 0, 400, 300})};
        platform::CaptureResult larger;
        larger.displays = {display(1, {0, 0, 640, 480})};
        for (const platform::CaptureResult &result : {failed, other, larger}) {
            troubled.clear();
            m_capturer->result = result;
            QVERIFY(m_flow->overlay()->startLongMode());
            QTRY_COMPARE(troubled.count(), 1);
            m_flow->overlay()->finishLongMode(false);
        }
    }

    void aRefusedScrollingCaptureLeavesNothingBehind()
    {
        m_capturer->access = platform::IScreenCapturer::Denied;
        m_flow->startLongCapture();
        m_capturer->access = platform::IScreenCapturer::Granted;
        m_flow->startCapture();
        QTRY_VERIFY(m_flow->overlay());
        drag(m_flow->overlay(), {20, 20}, {320, 260});
        QCoreApplication::processEvents();
        QVERIFY(!m_flow->overlay()->isLongActive());
    }

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<SettingsStore> m_settings;
    std::unique_ptr<FakeCapturer> m_capturer;
    std::unique_ptr<MemoryHistory> m_records;
    std::unique_ptr<Notices> m_notices;
    QPoint m_cursor;
    QList<CaptureFlow::Finished> m_finished;
    std::unique_ptr<CaptureFlow> m_flow;
};

TAVREL_TEST_MAIN(QApplication, CaptureFlowTest)
#include "test_capture_flow.moc"
