#include "loadprofile/PlainFile.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

QByteArray Native(const QString& path)
{
    return QFile::encodeName(path);
}

// Why what `status` describes is not a file the download may write, or nothing.
std::optional<QString> Foreign(const struct stat& status)
{
    if (S_ISLNK(status.st_mode))
        return QStringLiteral("it is a symbolic link, and the download writes through no link");
    if (!S_ISREG(status.st_mode))
        return QStringLiteral("it is not a plain file");
    if (status.st_uid != geteuid())
        return QStringLiteral("it belongs to another user");
    return std::nullopt;
}

} // namespace

std::optional<QString> PlainFile::Refusal(const QString& path)
{
    struct stat status {};
    if (::lstat(Native(path).constData(), &status) != 0)
        return std::nullopt;
    return Foreign(status);
}

bool PlainFile::Open(int flags)
{
    Close();
    m_fd = ::open(Native(m_path).constData(), flags | O_NOFOLLOW | O_CLOEXEC, 0644);
    if (m_fd < 0) {
        // ELOOP is what O_NOFOLLOW answers for a link: say so in the words of the other refusals.
        const int error = errno;
        if (const auto refused = Refusal(m_path)) {
            m_reason = *refused;
            return false;
        }
        return Failed(error);
    }
    struct stat status {};
    if (::fstat(m_fd, &status) != 0)
        return Failed(errno);
    if (const auto refused = Foreign(status)) {
        m_reason = *refused;
        Close();
        return false;
    }
    return true;
}

qint64 PlainFile::Size() const
{
    struct stat status {};
    return m_fd >= 0 && ::fstat(m_fd, &status) == 0 ? qint64(status.st_size) : -1;
}

bool PlainFile::Append(const QByteArray& data)
{
    const char* next = data.constData();
    qint64 left = data.size();
    while (left > 0) {
        const ssize_t written = ::write(m_fd, next, size_t(left));
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return Failed(written < 0 ? errno : ENOSPC);
        next += written;
        left -= written;
    }
    return true;
}

QByteArray PlainFile::Read(qint64 at, qint64 count)
{
    QByteArray data(count, Qt::Uninitialized);
    const ssize_t got = ::pread(m_fd, data.data(), size_t(count), off_t(at));
    data.resize(got > 0 ? got : 0);
    if (got < 0)
        Failed(errno);
    return data;
}

bool PlainFile::Truncate(qint64 size)
{
    return ::ftruncate(m_fd, off_t(size)) == 0 || Failed(errno);
}

bool PlainFile::Sync()
{
    return ::fdatasync(m_fd) == 0 || Failed(errno);
}

bool PlainFile::Close()
{
    if (m_fd < 0)
        return true;
    const int fd = m_fd;
    m_fd = -1;
    return ::close(fd) == 0 || Failed(errno);
}

bool PlainFile::Failed(int error)
{
    m_reason = qt_error_string(error);
    return false;
}
