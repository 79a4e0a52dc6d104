#pragma once

#include <QDateTime>
#include <QPainter>
#include <QWidget>

/// A plain widget that paints a picture over all of itself, one in more than 50 ms.
class BareScreen : public QWidget
{
public:
    BareScreen() { setAttribute(Qt::WA_OpaquePaintEvent); } // nothing is painted below the picture

    void take(const QImage &picture)
    {
        constexpr qint64 kGapMs = 50;
        const qint64 now = QDateTime::currentMSecsSinceEpoch();
        if (now <= m_lastMs + kGapMs)
            return;
        m_lastMs = now;
        m_picture = picture;
        update();
    }

protected:
    void paintEvent(QPaintEvent *) override { QPainter(this).drawImage(rect(), m_picture); }

private:
    QImage m_picture;
    qint64 m_lastMs = 0;
};
