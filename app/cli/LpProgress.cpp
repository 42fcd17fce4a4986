#include "app/cli/LpProgress.h"

#include "loadprofile/LpPace.h"

#include <cstdio>

#include <unistd.h>

namespace {

constexpr qint64 kRedrawMs = 250;
constexpr int kBarWidth = 30;

} // namespace

LpProgress::LpProgress(qint64 total, qint64 done)
    : m_terminal(isatty(STDERR_FILENO) == 1), m_total(total), m_startedAt(done), m_done(done)
{
    m_started.start();
    if (m_terminal)
        Draw();
}

void LpProgress::Update(qint64 done)
{
    m_done = done;
    if (m_terminal && m_drawn.elapsed() >= kRedrawMs)
        Draw();
}

void LpProgress::End()
{
    if (!m_terminal)
        return;
    Draw();
    std::fputs("\n", stderr);
    m_terminal = false;
}

void LpProgress::Draw()
{
    const QByteArray line = Line(m_done, m_total, m_done - m_startedAt, double(m_started.elapsed()) / 1000).toUtf8();
    // "\r" goes back to the start of the line, "\x1b[K" clears what a longer line left there.
    std::fprintf(stderr, "\r%s\x1b[K", line.constData());
    std::fflush(stderr);
    m_drawn.start();
}

QString LpProgress::Line(qint64 done, qint64 total, qint64 doneHere, double seconds)
{
    const int filled = total > 0 ? int(kBarWidth * done / total) : kBarWidth;
    QString line = QStringLiteral("[%1%2] %3/%4 intervals")
                       .arg(QString(filled, u'#'), QString(kBarWidth - filled, u'.'))
                       .arg(done)
                       .arg(total);
    const std::optional<LpPace> pace = LpPace::Of(doneHere, total - done, seconds);
    if (!pace)
        return line + QStringLiteral("  --/s  --:-- left");
    return line + QStringLiteral("  %1/s  %2 left").arg(pace->perSecond, 0, 'f', 1).arg(pace->TimeLeft());
}
