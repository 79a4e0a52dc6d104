#include "tools/tour/keptfile.h"

#include <QFile>

namespace tour {

namespace {

QByteArray bytesOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

KeptFile::KeptFile(const QString &path)
    : m_path(path), m_wasThere(QFile::exists(path)), m_bytes(bytesOf(path))
{
}

KeptFile::~KeptFile()
{
    if (!m_wasThere) {
        QFile::remove(m_path);
        return;
    }
    if (QFile::exists(m_path) && bytesOf(m_path) == m_bytes)
        return;
    QFile file(m_path);
    if (file.open(QIODevice::WriteOnly))
        file.write(m_bytes);
}

} // namespace tour
