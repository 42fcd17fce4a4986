#pragma once

#include <QElapsedTimer>
#include <QString>
#include <QtGlobal>

// The progress bar of a download on stderr, only when stderr is a terminal: the intervals done
// of the range, the rate of this run and the time left, one line redrawn in place at most
// four times a second.
class LpProgress {
public:
    // `total` intervals in the range, `done` of them in the file already (an earlier run's).
    LpProgress(qint64 total, qint64 done);

    void Update(qint64 done);
    // The last state drawn and the line ended, so that what follows starts a line of its own.
    void End();

    // The line for `done` of `total`, `doneHere` of them in `seconds` of this run.
    static QString Line(qint64 done, qint64 total, qint64 doneHere, double seconds);

private:
    void Draw();

    bool m_terminal;
    qint64 m_total;
    qint64 m_startedAt;  // intervals done before this run
    qint64 m_done;
    QElapsedTimer m_started;
    QElapsedTimer m_drawn;
};
