#include "app/cli/LpProgress.h"

#include <cstdio>

#include <unistd.h>

namespace {

constexpr qint64 kRedrawMs = 250;
constexpr int kBarWidth = 30;

QString Duration(qint64 seconds)
{
    return seconds >= 3600 ? QStringLiteral("%1:%2:%3").arg(seconds / 3600).arg(seconds / 60 % 60, 2, 10, QChar(u'0')).arg(seconds % 60, 2, 10, QChar(u'0'))
                           : QStringLiteral("%1:%2").arg(seconds / 60).arg(seconds % 60, 2, 10, QChar(u'0'));
}

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
    if (doneHere <= 0 || seconds <= 0)
        return line + QStringLiteral("  --/s  --:-- left");
    const double rate = doneHere / seconds;
    return line + QStringLiteral("  %1/s  %2 left").arg(rate, 0, 'f', 1).arg(Duration(qint64((total - done) / rate + 0.5)));
}
