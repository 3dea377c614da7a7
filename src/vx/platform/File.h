#pragma once
// Thin wrapper over a POSIX file descriptor.
#include <cstdint>

namespace vel {

class CVelFile {
  public:
    enum eOpenType { eOpenRead = 0, eOpenWrite = 1 };
    enum eSeekOrigin { eSeekBegin = 0, eSeekCurrent = 1, eSeekEnd = 2 };

    CVelFile() = default;
    ~CVelFile();
    CVelFile(const CVelFile&) = delete;
    CVelFile& operator=(const CVelFile&) = delete;

    // type 0: open an existing regular file for reading (directories, devices, FIFOs and
    // sockets fail to open); type 1: create or truncate for writing.
    bool CreateFileA(const char* name, int type);
    // Succeeds only when exactly `size` bytes arrive.
    bool Read(void* buffer, int size);
    bool Write(const void* buffer, int size);
    bool SetFilePointer(std::int64_t distance, int origin);
    std::int64_t GetSize() const;  // -1 when not open
    bool IsOpen() const { return m_fd >= 0; }
    void Close();

    static int GetLastError();  // errno of the last failed call

  private:
    int m_fd = -1;
};

// Replaces the file name with size bytes so that it is never seen half-written: they go to a
// temporary file in the same directory, which is synced, given the old file's permissions and
// renamed over it. A symbolic link is followed, even one naming no file yet, so that the file
// it names is replaced and the link stays. A file that may not be written is refused. A device
// or FIFO, a file with other hard links, a file whose owner and group the new one could not
// take, and a file beside which no temporary can be made (a directory that may not be written
// into, a name too long for the temporary's suffix) are written in place instead, as
// CreateFileA and Write would. True only when every byte was written, synced and closed. On
// failure the temporary file is removed, the old file is untouched (unless it was being
// written in place) and GetLastError has the errno.
bool ReplaceFileContents(const char* name, const void* data, int size);

}  // namespace vel
