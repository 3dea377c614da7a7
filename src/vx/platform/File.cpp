#include "vx/platform/File.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <string>

#include "vx/platform/Path.h"

namespace vel {

namespace {

thread_local int t_lastError = 0;

bool Fail(int error) {
    t_lastError = error;
    return false;
}

bool FailWithErrno() {
    return Fail(errno);
}

int CloseWithError(int fd, int error) {
    close(fd);
    errno = error;
    return -1;
}

// O_NONBLOCK keeps opening a FIFO without a writer from hanging; it is refused right after.
int OpenRegularForReading(const char* name) {
    const int fd = open(name, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) return -1;
    struct stat info;
    if (fstat(fd, &info) != 0) return CloseWithError(fd, errno);
    if (!S_ISREG(info.st_mode)) return CloseWithError(fd, S_ISDIR(info.st_mode) ? EISDIR : EINVAL);
    return fd;
}

bool WriteAll(int fd, const void* buffer, int size) {
    const auto* in = static_cast<const char*>(buffer);
    for (int done = 0; done < size;) {
        const ssize_t put = write(fd, in + done, static_cast<std::size_t>(size - done));
        if (put < 0 && errno != EINTR) return false;
        if (put > 0) done += static_cast<int>(put);
    }
    return true;
}

// The path that name leads to through symbolic links, whether or not a file is there. False,
// with errno, for a link that cannot be read or a chain longer than the kernel follows.
bool FollowLinks(std::string& path) {
    constexpr int kMaxLinks = 40;
    for (int links = 0; links < kMaxLinks; ++links) {
        struct stat info;
        if (lstat(path.c_str(), &info) != 0 || !S_ISLNK(info.st_mode)) return true;
        char target[PATH_MAX];
        const ssize_t length = readlink(path.c_str(), target, sizeof target);
        if (length < 0) return false;
        if (length == sizeof target) {
            errno = ENAMETOOLONG;
            return false;
        }
        path = MakeFullPath(std::string(target, static_cast<std::size_t>(length)),
                            ExtractFilePath(path));
    }
    errno = ELOOP;
    return false;
}

// What a file created with mode 0666 gets.
mode_t NewFileMode() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

// Makes the rename durable sooner; it has happened whether or not this works.
void SyncDirectory(const std::string& path) {
    const std::string directory = ExtractFilePath(path);
    const int fd =
        open(directory.empty() ? "." : directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return;
    fsync(fd);
    close(fd);
}

// Closes fd (unless -1) and removes the file, keeping errno for GetLastError.
bool DiscardTemporary(int fd, const std::string& path) {
    const int error = errno;
    if (fd >= 0) close(fd);
    unlink(path.c_str());
    return Fail(error);
}

// Written through the file's own inode. Only a regular file is synced: devices and FIFOs
// refuse fsync and hold nothing to make durable.
bool WriteInPlace(const char* name, const void* data, int size) {
    const int fd = open(name, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (fd < 0) return FailWithErrno();
    struct stat info;
    if (!WriteAll(fd, data, size) || fstat(fd, &info) != 0 ||
        (S_ISREG(info.st_mode) && fsync(fd) != 0)) {
        CloseWithError(fd, errno);
        return FailWithErrno();
    }
    return close(fd) == 0 || FailWithErrno();
}

// The temporary cannot be made beside the target (a directory the process may not write
// into, a name too long for the suffix), though the target itself may be writable.
bool NoRoomForTemporary(int error) {
    return error == EACCES || error == EPERM || error == ENAMETOOLONG;
}

}  // namespace

CVelFile::~CVelFile() {
    Close();
}

bool CVelFile::CreateFileA(const char* name, int type) {
    Close();
    if (!name || (type != eOpenRead && type != eOpenWrite)) return Fail(EINVAL);
    m_fd = type == eOpenRead ? OpenRegularForReading(name)
                             : open(name, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    return IsOpen() || FailWithErrno();
}

bool CVelFile::Read(void* buffer, int size) {
    if (!IsOpen()) return Fail(EBADF);
    if (size < 0 || (!buffer && size > 0)) return Fail(EINVAL);
    auto* out = static_cast<char*>(buffer);
    for (int done = 0; done < size;) {
        const ssize_t got = read(m_fd, out + done, static_cast<std::size_t>(size - done));
        if (got == 0) return Fail(0);  // end of file before `size` bytes: no errno to report
        if (got < 0 && errno != EINTR) return FailWithErrno();
        if (got > 0) done += static_cast<int>(got);
    }
    return true;
}

bool CVelFile::Write(const void* buffer, int size) {
    if (!IsOpen()) return Fail(EBADF);
    if (size < 0 || (!buffer && size > 0)) return Fail(EINVAL);
    return WriteAll(m_fd, buffer, size) || FailWithErrno();
}

bool CVelFile::SetFilePointer(std::int64_t distance, int origin) {
    static const int whence[] = {SEEK_SET, SEEK_CUR, SEEK_END};
    if (!IsOpen()) return Fail(EBADF);
    if (origin < eSeekBegin || origin > eSeekEnd) return Fail(EINVAL);
    return lseek(m_fd, distance, whence[origin]) >= 0 || FailWithErrno();
}

std::int64_t CVelFile::GetSize() const {
    struct stat info;
    if (!IsOpen() || fstat(m_fd, &info) != 0) return -1;
    return info.st_size;
}

void CVelFile::Close() {
    if (!IsOpen()) return;
    close(m_fd);
    m_fd = -1;
}

int CVelFile::GetLastError() {
    return t_lastError;
}

bool ReplaceFileContents(const char* name, const void* data, int size) {
    if (!name || size < 0 || (!data && size > 0)) return Fail(EINVAL);
    struct stat old;
    const bool exists = stat(name, &old) == 0;
    // A device or FIFO holds no text to keep whole, and cannot be renamed over; a file with
    // other names would lose them to a new inode.
    if (exists && (!S_ISREG(old.st_mode) || old.st_nlink > 1))
        return WriteInPlace(name, data, size);
    std::string target = name;
    if (!FollowLinks(target)) return FailWithErrno();
    // The rename would replace a file that may not be written; writing in place would not.
    if (exists && faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) != 0) {
        return FailWithErrno();
    }
    std::string temporary = target + ".vx-XXXXXX";
    const int fd = mkostemp(temporary.data(), O_CLOEXEC);
    if (fd < 0) return NoRoomForTemporary(errno) ? WriteInPlace(name, data, size) : FailWithErrno();
    // Someone else's file, or one of a group this process is not in, keeps its owner only
    // when it is written in place.
    if (exists && fchown(fd, old.st_uid, old.st_gid) != 0) {
        DiscardTemporary(fd, temporary);
        return WriteInPlace(name, data, size);
    }
    const mode_t mode = exists ? old.st_mode & 07777 : NewFileMode();
    if (!WriteAll(fd, data, size) || fchmod(fd, mode) != 0 || fsync(fd) != 0) {
        return DiscardTemporary(fd, temporary);
    }
    if (close(fd) != 0 || rename(temporary.c_str(), target.c_str()) != 0) {
        return DiscardTemporary(-1, temporary);
    }
    SyncDirectory(target);
    return true;
}

}  // namespace vel
