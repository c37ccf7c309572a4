#include "output/clipboard_writer.h"
#include "output/copy_image.h"
#include "output/image_file.h"
#include "settings/settings_config.h"
#include "support/test_main.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QProcess>
#include <QRegularExpression>

#include <csignal>

using namespace tavrel;

namespace {

QImage picture(QSize size)
{
    QImage image(size, QImage::Format_ARGB32);
    image.fill(Qt::darkCyan);
    return image;
}

/// What another program reads from the clipboard, while this one keeps answering.
QByteArray pasted(const QString &target)
{
    QProcess reader;
    reader.start(u"xclip"_qs, {u"-selection"_qs, u"clipboard"_qs, u"-t"_qs, target, u"-o"_qs});
    [&reader] { QTRY_COMPARE_WITH_TIMEOUT(reader.state(), QProcess::NotRunning, 60'000); }();
    return reader.readAllStandardOutput();
}

/// Another program that owns the clipboard.
class ForeignOwner
{
public:
    explicit ForeignOwner(const QByteArray &text)
    {
        m_process.start(u"xclip"_qs, {u"-selection"_qs, u"clipboard"_qs, u"-quiet"_qs, u"-i"_qs});
        m_process.write(text);
        m_process.closeWriteChannel();
    }
    ~ForeignOwner()
    {
        m_process.kill();
        m_process.waitForFinished();
    }
    Q_DISABLE_COPY_MOVE(ForeignOwner)

    /// From now on it does not answer any more.
    void freeze() { ::kill(pid_t(m_process.processId()), SIGSTOP); }

private:
    QProcess m_process;
};

} // namespace

class ClipboardExchangeTest : public QObject
{
    Q_OBJECT

private:
    static bool written(const std::function<void(QObject *, ClipboardWriter::Done)> &begin)
    {
        QObject context;
        std::optional<bool> answer;
        begin(&context, [&answer](bool result) { answer = result; });
        [&answer] { QTRY_VERIFY_WITH_TIMEOUT(answer.has_value(), 60'000); }();
        return answer.value_or(false);
    }

private Q_SLOTS:
    // Asking such an owner for anything would take Qt's time-out of five seconds.
    void anOwnerThatNeverAnswersIsNotAsked()
    {
        SystemClipboard clipboard;
        ClipboardWriter writer(clipboard);
        QVERIFY(written([&](QObject *context, auto done) { writer.setText(u"mine"_qs, context, done); }));
        ForeignOwner foreign("foreign");
        QTRY_COMPARE(pasted(u"UTF8_STRING"_qs), QByteArray("foreign"));
        foreign.freeze();
        QElapsedTimer timer;
        timer.start();
        QVERIFY(!clipboard.readBack());
        QVERIFY(written([&](QObject *context, auto done) { writer.setImage(picture({50, 50}), context, done); }));
        QVERIFY2(timer.elapsed() < 4000, "the frozen program was asked");
        QCOMPARE(QImage::fromData(pasted(u"image/png"_qs)).size(), QSize(50, 50));
    }
};

TAVREL_TEST_MAIN(QGuiApplication, ClipboardExchangeTest)
#include "test_clipboard_exchange.moc"
