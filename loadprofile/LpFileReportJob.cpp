#include "loadprofile/LpFileReportJob.h"

#include <QElapsedTimer>

LpFileReportJob::LpFileReportJob(const QString& path, qint64 intervalSeconds, QObject* parent)
    : QObject(parent), m_file(path), m_refused(LpFileReport::Open(m_file))
{
    if (!m_refused)
        m_scan = std::make_unique<LpFileReport::Scan>(m_file, intervalSeconds);
    m_next.setSingleShot(true);
    m_next.setInterval(kPauseMs);
    connect(&m_next, &QTimer::timeout, this, &LpFileReportJob::Slice);
    m_next.start();
}

LpFileReportJob::~LpFileReportJob() = default;

void LpFileReportJob::Slice()
{
    if (!m_scan) {
        emit done(*m_refused);
        return;
    }
    QElapsedTimer spent;
    spent.start();
    while (!spent.hasExpired(kSliceMs)) {
        if (!m_scan->Next(kSliceBytes)) {
            emit done(m_scan->Finish());
            return;
        }
    }
    m_next.start();
}
