#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

// A file of "LP Data" opened without following a link. The folder may be shared (/tmp): a
// link planted under the name of a day's file or of a progress record would make the download
// write into whatever file it points at, so a link, anything but a plain file, and another
// user's file are refused. Every failure keeps the system's reason in words.
class PlainFile {
public:
    explicit PlainFile(QString path) : m_path(std::move(path)) {}
    ~PlainFile() { Close(); }
    PlainFile(const PlainFile&) = delete;
    PlainFile& operator=(const PlainFile&) = delete;

    // Why the name `path` must not be written: a link, not a plain file, another user's
    // file. Nothing when it is none of those or does not exist.
    static std::optional<QString> Refusal(const QString& path);

    // Opens with the open(2) flags `flags` (O_NOFOLLOW added) and checks what was opened.
    bool Open(int flags);
    qint64 Size() const;
    // The whole of `data` at the end of the file, or false.
    bool Append(const QByteArray& data);
    // Up to `count` bytes from `at`.
    QByteArray Read(qint64 at, qint64 count);
    bool Truncate(qint64 size);
    // What was written is on the disk, not only in the system's cache.
    bool Sync();
    bool Close();

    const QString& Path() const { return m_path; }
    // The reason of the last failure, e.g. "No space left on device".
    const QString& Reason() const { return m_reason; }

private:
    bool Failed(int error);

    QString m_path;
    int m_fd = -1;
    QString m_reason;
};
