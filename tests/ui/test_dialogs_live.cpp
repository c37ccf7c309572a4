#include "support/test_main.h"

#include "platform/linux/x11_services.h"
#include "ui/dialog_hosts.h"
#include "ui/dialog_services.h"
#include "ui/dialogs.h"

#include <QApplication>
#include <QFileDialog>
#include <QProcess>
#include <QScreen>
#include <QTemporaryDir>
#include <QWindow>

using namespace tavrel;
using namespace tavrel::ui;
using dialogs::Icon;

/// Dialogs under a real window manager, operated from outside by key presses alone: whoever has the keyboard gets
/// them.
class TestDialogsLive : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void cleanup() { QTRY_COMPARE(dialogs::openDialogCount(), 0); }
    void cleanupTestCase() { dialogs::setWindowController(nullptr); }
    void aFloatTakesTheKeyboard();
    void anOverlaysSheetAndFileDialogAreInReach();

private:
    static void type(const QStringList &arguments) { QProcess::execute(QStringLiteral("xdotool"), arguments); }

    std::unique_ptr<platform::X11Services> m_services;
};

void TestDialogsLive::initTestCase()
{
    m_services = platform::X11Services::create();
    QVERIFY(m_services);
    dialogs::setWindowController(m_services->windowController());
}

void TestDialogsLive::aFloatTakesTheKeyboard()
{
    QWidget window;
    window.resize(600, 400);
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));

    std::optional<QString> answer;
    dialogs::askText(nullptr, QStringLiteral("Rename"), {}, QStringLiteral("old"),
                     [&](const std::optional<QString> &text) { answer = text; });
    QTRY_VERIFY(qobject_cast<dialogs::FloatingDialog *>(QApplication::activeWindow()));
    type({QStringLiteral("type"), QStringLiteral("new name")});
    type({QStringLiteral("key"), QStringLiteral("Return")});
    QTRY_COMPARE(answer, std::optional(QStringLiteral("new name")));
    QTRY_VERIFY(window.isActiveWindow());

    int answers = 0;
    dialogs::message(&window, Icon::Information, QStringLiteral("Done"), {}, [&] { ++answers; });
    type({QStringLiteral("key"), QStringLiteral("Escape")});
    QTRY_COMPARE(answers, 1);
}

void TestDialogsLive::anOverlaysSheetAndFileDialogAreInReach()
{
    QWidget overlay(nullptr, Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    overlay.winId();
    const auto controller = m_services->windowController();
    controller->setWindowRole(overlay.windowHandle(), platform::WindowRole::Overlay);
    overlay.setGeometry(overlay.screen()->geometry());
    overlay.show();
    controller->activate(overlay.windowHandle());
    QVERIFY(QTest::qWaitForWindowActive(&overlay));

    QList<bool> answers;
    dialogs::confirm(
        &overlay, Icon::Warning, QStringLiteral("Delete?"), {}, {}, [&](bool yes) { answers.append(yes); }, this);
    type({QStringLiteral("key"), QStringLiteral("Tab"), QStringLiteral("Return")});
    QTRY_COMPARE(answers, (QList<bool>{true}));

    const QTemporaryDir dir;
    QString saved;
    dialogs::saveFile(&overlay, QStringLiteral("Save"), dir.filePath(QStringLiteral("a.png")),
                      QStringLiteral("PNG (*.png)"), [&](const QString &path) { saved = path; });
    QTRY_VERIFY(qobject_cast<QFileDialog *>(QApplication::activeWindow()));
    const QWidget *dialog = QApplication::activeWindow();
    QTRY_VERIFY(dialog->windowHandle()->isExposed());
    // The pixels that are on the screen now are the dialog's and not the overlay's.
    const QPoint probe = dialog->mapToGlobal(QPoint(3, 3));
    const QRgb expected = dialog->palette().color(QPalette::Window).rgb();
    QTRY_COMPARE(overlay.screen()->grabWindow(0, probe.x(), probe.y(), 1, 1).toImage().pixel(0, 0), expected);
    type({QStringLiteral("type"), QStringLiteral("typed")});
    type({QStringLiteral("key"), QStringLiteral("Return")});
    QTRY_COMPARE(saved, dir.filePath(QStringLiteral("typed.png")));
}

TAVREL_TEST_MAIN(QApplication, TestDialogsLive)
#include "test_dialogs_live.moc"
