#include "tool/capture/filereplace.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

QString reasonOf(int err)
{
    return QString::fromLocal8Bit(std::strerror(err));
}

bool writeAll(int fd, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t n = ::write(fd, bytes.data(), bytes.size());
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        bytes.remove_prefix(std::size_t(n));
    }
    return true;
}

} // namespace

bool ReplaceFileContents(const QString &path, std::string_view bytes, QString &reason)
{
    // The file a link points to is the one that changes.
    const QFileInfo info(path);
    const QString target = info.isSymLink() && info.exists() ? info.canonicalFilePath() : path;
    const std::string finalName = QFile::encodeName(target).toStdString();

    struct stat old {};
    const bool exists = ::stat(finalName.c_str(), &old) == 0;
    if (exists && ::access(finalName.c_str(), W_OK) != 0) {
        reason = reasonOf(errno);
        return false;
    }

    // A name of our own beside the file: the rename then stays within one
    // file system, and so replaces the old file in one step.
    std::string tempName;
    int fd = -1;
    for (int attempt = 0; fd < 0 && attempt < 100; ++attempt) {
        tempName = finalName + ".tmp" + std::to_string(::getpid()) + '-' + std::to_string(attempt);
        fd = ::open(tempName.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (fd < 0 && errno != EEXIST)
            break;
    }
    if (fd < 0) {
        reason = reasonOf(errno);
        return false;
    }

    auto fail = [&](int err) {
        if (fd >= 0)
            ::close(fd);
        ::unlink(tempName.c_str());
        reason = reasonOf(err);
        return false;
    };
    if (exists && ::fchmod(fd, old.st_mode & 07777) != 0)
        return fail(errno);
    if (!writeAll(fd, bytes))
        return fail(errno);
    if (::fsync(fd) != 0)
        return fail(errno);
    const int closed = ::close(fd);
    fd = -1;
    if (closed != 0)
        return fail(errno);
    if (::rename(tempName.c_str(), finalName.c_str()) != 0)
        return fail(errno);

    // The rename itself reaches the disk with the folder.
    const std::size_t slash = finalName.rfind('/');
    const std::string folder = slash == std::string::npos ? std::string(".") : finalName.substr(0, slash + 1);
    const int dirFd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dirFd >= 0) {
        ::fsync(dirFd);
        ::close(dirFd);
    }
    return true;
}
