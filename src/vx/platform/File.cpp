#include "vx/platform/File.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

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
    const auto* in = static_cast<const char*>(buffer);
    for (int done = 0; done < size;) {
        const ssize_t put = write(m_fd, in + done, static_cast<std::size_t>(size - done));
        if (put < 0 && errno != EINTR) return FailWithErrno();
        if (put > 0) done += static_cast<int>(put);
    }
    return true;
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

}  // namespace vel
