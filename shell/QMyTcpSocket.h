#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QTimer>

class QTcpSocket;

/// One attempt at a TCP connection and what becomes of it. Lives on the main thread, has no parent
/// and is kept to the end of the process; each connect makes a new one.
class QMyTcpSocket : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Starts connecting to `ip`:`port`. The outcome comes as `signals_ConnectSuccess` or, after
    /// at most three seconds, as `signals_ConnectFail`.
    void createSocket(const QString &ip, int port, bool isFrist);

signals:
    /// Asks for a new connection after a loss. Nobody listens: this program never re-creates one.
    void signals_CreateMyTcpSocket(QString ip, int port, bool isFrist);
    void signals_ReceiveTcpData(QByteArray ba, QString address, int connectType);
    void signals_ConnectSuccess(QTcpSocket *obj);
    void signals_ConnectFail(QString ipAddress);

private:
    void limitConnectTime();
    void onConnected();
    void onReadyRead();
    void endRest();
    void onError();
    void onDisconnected();
    void onConnectTimeout();

    QString m_ip;
    int m_port = 0;
    bool m_isFrist = true;  ///< until the connection came up for the first time
    bool m_handled = false; ///< the loss of this socket was acted upon
    QTimer m_rest;          ///< after a large chunk: the window's turn
    QTcpSocket *m_socket = nullptr;
};
