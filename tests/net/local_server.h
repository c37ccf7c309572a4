#pragma once

#include <QHash>
#include <QList>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUrl>

#include <functional>

namespace tavrel::test {

/// Answers each request for a path with the same bytes, headers included.
class LocalServer final : public QObject
{
public:
    LocalServer()
    {
        m_server.listen(QHostAddress::LocalHost);
        connect(&m_server, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket *socket = m_server.nextPendingConnection())
                connect(socket, &QTcpSocket::readyRead, this, [this, socket] { answer(socket); });
        });
    }

    [[nodiscard]] QUrl url(const QString &path) const
    {
        return QUrl(u"http://127.0.0.1:%1%2"_qs.arg(m_server.serverPort()).arg(path));
    }
    void put(const QByteArray &path, const QByteArray &answer) { m_answers.insert(path, answer); }
    void putFile(const QByteArray &path, const QByteArray &body)
    {
        put(path, "HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body);
    }
    /// Goes on for ever behind the answer.
    void setEndless(const QByteArray &path) { m_endless = path; }
    void close() { m_server.close(); }

    std::function<void()> onRequest;
    QList<QByteArray> requests; ///< their paths
    QByteArray lastRequest;

private:
    void answer(QTcpSocket *socket)
    {
        lastRequest = socket->readAll();
        const QByteArray path = lastRequest.mid(4, lastRequest.indexOf(' ', 4) - 4);
        requests.append(path);
        if (onRequest)
            onRequest();
        const QByteArray bytes = m_answers.value(path, "HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\n\r\n");
        socket->write(bytes);
        if (bytes.contains("Connection: close"))
            socket->disconnectFromHost();
        if (path != m_endless)
            return;
        const auto more = [socket] { socket->write(QByteArray(65536, ' ')); };
        connect(socket, &QTcpSocket::bytesWritten, this, more);
        more();
    }

    QTcpServer m_server;
    QHash<QByteArray, QByteArray> m_answers;
    QByteArray m_endless;
};

} // namespace tavrel::test
