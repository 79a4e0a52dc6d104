#pragma once

#include <QByteArray>
#include <QObject>
#include <QSocketNotifier>
#include <QString>

#include <memory>

/// The far end of a pseudo-terminal whose near end the program opens as a serial port.
class Pty : public QObject
{
    Q_OBJECT

public:
    Pty();
    ~Pty() override;

    QString path() const { return m_path; }
    void write(const QByteArray &bytes);

signals:
    void received(const QByteArray &bytes);

private:
    void read();

    int m_fd = -1;
    int m_near = -1; ///< kept open, so that the near end may come and go
    QString m_path;
    std::unique_ptr<QSocketNotifier> m_notifier;
};
