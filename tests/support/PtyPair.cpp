#include "PtyPair.h"

#include <QFileInfo>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTest>

namespace {

QString PtyEnd(const QString& link)
{
    return QStringLiteral("pty,raw,echo=0,link=%1").arg(link);
}

} // namespace

PtyPair::PtyPair(Second second)
{
    if (QStandardPaths::findExecutable(QStringLiteral("socat")).isEmpty()) {
        m_error = QStringLiteral("socat is not installed");
        return;
    }
    if (second == Second::PseudoTerminal) {
        m_second = m_dir.path() + QStringLiteral("/b");
        m_socat.start(QStringLiteral("socat"), {PtyEnd(first()), PtyEnd(m_second)});
        const bool up = QTest::qWaitFor([this] { return QFileInfo::exists(first()) && QFileInfo::exists(m_second); }, 5000);
        if (!up)
            m_error = QStringLiteral("socat did not create the pseudo-terminals");
        return;
    }
    // Port 0: the system picks a free one, and socat's notices tell which.
    m_socat.start(QStringLiteral("socat"), {QStringLiteral("-d"), QStringLiteral("-d"), PtyEnd(first()),
                                            QStringLiteral("tcp-listen:0,bind=127.0.0.1,reuseaddr")});
    static const QRegularExpression listening(QStringLiteral(R"(listening on AF=2 127\.0\.0\.1:(\d+))"));
    QString notices;
    const bool up = QTest::qWaitFor([&] {
        notices += QString::fromLocal8Bit(m_socat.readAllStandardError());
        const QRegularExpressionMatch match = listening.match(notices);
        if (match.hasMatch())
            m_second = QStringLiteral("tcp://127.0.0.1:") + match.captured(1);
        return match.hasMatch() && QFileInfo::exists(first());
    }, 5000);
    if (!up)
        m_error = QStringLiteral("socat did not come up: ") + notices;
}

PtyPair::~PtyPair()
{
    m_socat.terminate();
    m_socat.waitForFinished(2000);
}
