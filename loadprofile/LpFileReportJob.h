#pragma once

#include "loadprofile/LpFileReport.h"

#include <QFile>
#include <QObject>
#include <QTimer>

#include <memory>

// The report on a load-profile file, read in slices from the event loop: a slice takes a few
// milliseconds, so the poll timer and the meter's replies are served between slices however
// large the file is. It starts at once; deleting the job stops it.
class LpFileReportJob : public QObject {
    Q_OBJECT
public:
    // A slice, then a pause: the window's thread keeps half its time for the line and the
    // screen, and the simulated meter's thread its share of a busy machine.
    static constexpr int kSliceMs = 2;
    static constexpr int kPauseMs = 2;
    static constexpr qint64 kSliceBytes = 64 * 1024;

    // `intervalSeconds` 0 infers the interval from the rows.
    LpFileReportJob(const QString& path, qint64 intervalSeconds, QObject* parent = nullptr);
    ~LpFileReportJob() override;

signals:
    // Emitted once, from the event loop, as the last thing the job does.
    void done(const LpFileReport::Report& report);

private:
    void Slice();

    QFile m_file;
    std::optional<LpFileReport::Report> m_refused;
    std::unique_ptr<LpFileReport::Scan> m_scan;
    QTimer m_next;
};
