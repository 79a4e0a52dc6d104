#pragma once

#include <QByteArray>
#include <QString>

namespace tour {

/// Puts a file back at its end as it was found at its start: the same bytes, or none at all.
class KeptFile
{
public:
    explicit KeptFile(const QString &path);
    ~KeptFile();

    KeptFile(const KeptFile &) = delete;
    KeptFile &operator=(const KeptFile &) = delete;

private:
    QString m_path;
    bool m_wasThere;
    QByteArray m_bytes;
};

} // namespace tour
