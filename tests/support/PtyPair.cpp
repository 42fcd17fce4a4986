#include "PtyPair.h"

#include <QFileInfo>
#include <QStandardPaths>
#include <QTest>

PtyPair::PtyPair()
{
    if (QStandardPaths::findExecutable(QStringLiteral("socat")).isEmpty()) {
        m_error = QStringLiteral("socat is not installed");
        return;
    }
    const auto end = [](const QString& link) { return QStringLiteral("pty,raw,echo=0,link=%1").arg(link); };
    m_socat.start(QStringLiteral("socat"), {end(first()), end(second())});
    const bool up = QTest::qWaitFor([this] { return QFileInfo::exists(first()) && QFileInfo::exists(second()); }, 5000);
    if (!up)
        m_error = QStringLiteral("socat did not create the pseudo-terminals");
}

PtyPair::~PtyPair()
{
    m_socat.terminate();
    m_socat.waitForFinished(2000);
}
