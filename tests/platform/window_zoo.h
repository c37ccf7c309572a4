#pragma once

#include <QProcess>

namespace tavrel::test {

/// A running window_zoo. Ends with this object.
class WindowZoo final
{
public:
    WindowZoo()
    {
        m_process.start(QStringLiteral(WINDOW_ZOO), {});
        m_process.waitForStarted();
    }
    ~WindowZoo()
    {
        m_process.closeWriteChannel();
        m_process.waitForFinished();
    }
    Q_DISABLE_COPY_MOVE(WindowZoo)

    void tell(const QByteArray &command) { m_process.write(command + '\n'); }
    QByteArray answer()
    {
        while (!m_process.canReadLine()) {
            if (!m_process.waitForReadyRead(20'000))
                return {};
        }
        return m_process.readLine().trimmed();
    }
    /// Returns the window's id.
    quint32 open(const QByteArray &how)
    {
        tell("open " + how);
        return answer().toUInt();
    }
    [[nodiscard]] qint64 processId() const { return m_process.processId(); }

private:
    QProcess m_process;
};

} // namespace tavrel::test
