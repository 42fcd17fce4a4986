#pragma once

#include <QObject>
#include <QString>

// The status line under the tabs: the link's messages, a download's progress, why a command
// was not sent. Whoever presents the session shows its text as it changes.
class StatusLine : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

    const QString& Text() const { return m_text; }
    void Set(const QString& text)
    {
        if (text == m_text)
            return;
        m_text = text;
        emit changed(m_text);
    }

signals:
    void changed(const QString& text);

private:
    QString m_text;
};
