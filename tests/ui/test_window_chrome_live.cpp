#include "support/test_main.h"

#include "ui/theme_source.h"
#include "ui/window_border.h"
#include "ui/window_buttons.h"
#include "ui/window_chrome.h"

#include <QAbstractButton>
#include <QApplication>
#include <QProcess>
#include <QSet>

#include <cmath>

using namespace tavrel::ui;

namespace {

constexpr QRect kStart(400, 300, 600, 400);
constexpr QSize kLeast(320, 240);
constexpr int kTitle = 52;

void xdotool(const QStringList &arguments)
{
    QProcess::execute(QStringLiteral("xdotool"), arguments);
}

/// All places here are logical; those of the X server are pixels.
void pointer(const QPoint &logical)
{
    const QPoint point = (QPointF(logical) * qApp->devicePixelRatio()).toPoint();
    xdotool({QStringLiteral("mousemove"), QString::number(point.x()), QString::number(point.y())});
}

void button(bool down)
{
    xdotool({down ? QStringLiteral("mousedown") : QStringLiteral("mouseup"), QStringLiteral("1")});
}

bool hasWindowManager()
{
    QProcess process;
    process.start(QStringLiteral("xprop"), {QStringLiteral("-root"), QStringLiteral("_NET_SUPPORTING_WM_CHECK")});
    process.waitForFinished();
    return process.readAllStandardOutput().contains("window id");
}

/// What the X server says of the window, not what Qt thinks of it.
QRect outside(const QWidget &window)
{
    QProcess process;
    process.start(QStringLiteral("xwininfo"), {QStringLiteral("-id"), QString::number(window.winId())});
    process.waitForFinished();
    const QString text = QString::fromLatin1(process.readAllStandardOutput());
    const auto number = [&text](const char *name) {
        const QRegularExpression line(QString::fromLatin1(name) + QStringLiteral(": +(-?[0-9]+)"));
        return line.match(text).captured(1).toInt();
    };
    const auto logical = [&](const char *name) { return qRound(number(name) / qApp->devicePixelRatio()); };
    return {logical("Absolute upper-left X"), logical("Absolute upper-left Y"), logical("Width"), logical("Height")};
}

/// The same; at a fractional ratio a drag may begin a pixel beside, because its start is told in whole units.
bool isNear(const QRect &rect, const QRect &wanted)
{
    const double ratio = qApp->devicePixelRatio();
    const int room = ratio > std::floor(ratio) ? 1 : 0;
    return wanted.adjusted(-room, -room, room, room).contains(rect) &&
           rect.adjusted(-room, -room, room, room).contains(wanted);
}

} // namespace

/// A window with chrome, dragged about from outside with the real pointer. Without a window manager it follows the
/// pointer on its own.
class TestWindowChromeLive : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void edgesChangeTheSize_data();
    void edgesChangeTheSize();
    void sizeStopsAtTheLeast();
    void titleBarMoves();
    void doubleClickAndButtonsMaximise();

private:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void grab(const QPoint &from);
    /// Whether the window has come there with the pointer at `point`.
    bool isWith(const QPoint &point, const QRect &wanted);

    QSet<int> m_seen; ///< types of the events that the program has got
    ThemeSource m_themes{QStringLiteral("light")};
    std::unique_ptr<QWidget> m_window;
    WindowChrome *m_chrome = nullptr;
};

void TestWindowChromeLive::init()
{
    m_window = std::make_unique<QWidget>();
    m_window->setMinimumSize(kLeast);
    m_window->setGeometry(kStart);
    m_chrome = WindowChrome::install(m_window.get(), m_themes, kTitle);
    qApp->installEventFilter(this);
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    QTRY_COMPARE(outside(*m_window), kStart);
}

void TestWindowChromeLive::cleanup()
{
    button(false);
    qApp->removeEventFilter(this);
    m_window.reset();
}

void TestWindowChromeLive::grab(const QPoint &from)
{
    pointer(from);
    QTRY_COMPARE(QCursor::pos(), from);
    m_seen.clear();
    button(true);
    // The drag is reckoned from where the pointer is when the program asks for it.
    QTRY_VERIFY(m_seen.contains(QEvent::MouseButtonPress));
}

bool TestWindowChromeLive::isWith(const QPoint &point, const QRect &wanted)
{
    if (isNear(outside(*m_window), wanted))
        return true;
    // The window manager takes the pointer some time after it was asked; until then it sees no motion.
    pointer(point + QPoint(1, 1));
    pointer(point);
    return false;
}

bool TestWindowChromeLive::eventFilter(QObject *watched, QEvent *event)
{
    if (watched->isWidgetType())
        m_seen.insert(event->type());
    return false;
}

void TestWindowChromeLive::edgesChangeTheSize_data()
{
    QTest::addColumn<QPoint>("from");
    QTest::addColumn<QPoint>("by");
    QTest::addColumn<QRect>("result");
    const int right = kStart.right();
    const int bottom = kStart.bottom();
    const QPoint middle = kStart.center();
    QTest::newRow("left") << QPoint(kStart.left(), middle.y()) << QPoint(-60, 20) << kStart.adjusted(-60, 0, 0, 0);
    QTest::newRow("bottom") << QPoint(middle.x(), bottom) << QPoint(20, 40) << kStart.adjusted(0, 0, 0, 40);
    QTest::newRow("top left") << kStart.topLeft() << QPoint(30, 40) << kStart.adjusted(30, 40, 0, 0);
    QTest::newRow("bottom right") << QPoint(right, bottom) << QPoint(-80, -60) << kStart.adjusted(0, 0, -80, -60);
}

void TestWindowChromeLive::edgesChangeTheSize()
{
    QFETCH(QPoint, from);
    QFETCH(QPoint, by);
    QFETCH(QRect, result);
    grab(from);
    QTRY_VERIFY2(isWith(from + by, result), qPrintable(QDebug::toString(outside(*m_window))));
    button(false);
    QTRY_VERIFY(isNear(m_window->geometry(), result));
    QCOMPARE(m_chrome->border()->size(), m_window->size());
}

void TestWindowChromeLive::sizeStopsAtTheLeast()
{
    const QPoint from(kStart.left(), kStart.center().y());
    grab(from);
    QTRY_VERIFY(isWith(from + QPoint(500, 0),
                       QRect(kStart.right() + 1 - kLeast.width(), kStart.top(), kLeast.width(), kStart.height())));
}

void TestWindowChromeLive::titleBarMoves()
{
    const QPoint from = kStart.topLeft() + QPoint(200, 26);
    grab(from);
    m_seen.clear();
    pointer(from + QPoint(6, 0)); // a drag and no click
    QTRY_VERIFY(m_seen.contains(QEvent::MouseMove));
    // A window manager reckons from where the click became a drag.
    const QPoint lost = hasWindowManager() ? QPoint(6, 0) : QPoint();
    QTRY_VERIFY(isWith(from + lost + QPoint(120, 90), kStart.translated(120, 90)));
    button(false);
    // The pointer is free again, and the window below it.
    pointer(kStart.center());
    button(true);
    pointer(kStart.center() + QPoint(30, 30));
    button(false);
    QTRY_COMPARE(QApplication::mouseButtons(), Qt::NoButton);
    QVERIFY(isNear(outside(*m_window), kStart.translated(120, 90)));
}

void TestWindowChromeLive::doubleClickAndButtonsMaximise()
{
    if (!hasWindowManager())
        QSKIP("maximising is the window manager's");
    const QRect desk = m_window->screen()->availableGeometry();
    pointer(kStart.topLeft() + QPoint(200, 26));
    xdotool({QStringLiteral("click"), QStringLiteral("--repeat"), QStringLiteral("2"), QStringLiteral("--delay"),
             QStringLiteral("20"), QStringLiteral("1")});
    QTRY_COMPARE(outside(*m_window), desk);
    QTRY_VERIFY(!m_chrome->border()->isVisible());
    auto *child = m_chrome->buttons()->findChild<QAbstractButton *>(QStringLiteral("windowMaximize"));
    QTRY_COMPARE(child->mapToGlobal(QPoint(46 + 46, 0)), QPoint(desk.right() + 1, 10));
    pointer(child->mapToGlobal(child->rect().center()));
    xdotool({QStringLiteral("click"), QStringLiteral("1")});
    QTRY_COMPARE(outside(*m_window), kStart);
    QTRY_VERIFY(m_chrome->border()->isVisible());

    child = m_chrome->buttons()->findChild<QAbstractButton *>(QStringLiteral("windowMinimize"));
    QTRY_COMPARE(child->mapToGlobal(QPoint(0, 0)), QPoint(kStart.right() + 1 - 138, kStart.top() + 10));
    pointer(child->mapToGlobal(child->rect().center()));
    xdotool({QStringLiteral("click"), QStringLiteral("1")});
    QTRY_VERIFY(m_window->isMinimized());
}

TAVREL_TEST_MAIN(QApplication, TestWindowChromeLive)
#include "test_window_chrome_live.moc"
