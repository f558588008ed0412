#pragma once

#include <QByteArray>
#include <utility>

namespace duomir {

// Closes a descriptor when it leaves its scope, whichever way.
class Fd
{
public:
    explicit Fd(int fd = -1) : m_fd(fd) {}
    ~Fd() { reset(); }
    Fd(Fd &&other) noexcept : m_fd(other.release()) {}
    Fd &operator=(Fd &&other) noexcept
    {
        if (this != &other) {
            reset();
            m_fd = other.release();
        }
        return *this;
    }
    Fd(const Fd &) = delete;
    Fd &operator=(const Fd &) = delete;

    int get() const { return m_fd; }
    bool valid() const { return m_fd >= 0; }
    int release() { return std::exchange(m_fd, -1); }
    void reset();

private:
    int m_fd;
};

// Opens a pair's root for the operations below it (O_PATH). A root given as a symbolic link is
// the directory it names, as the scanner lists it; -1 and errno on failure.
int openRoot(const QByteArray &root);

// Opens the directory `relative` ("/"-separated names) below the directory `base` one component
// at a time without following any symbolic link and without leaving `base` (openat2 with
// RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS where the kernel has it, O_NOFOLLOW per component
// elsewhere). Paths longer than the kernel's limit are walked in pieces. An empty `relative` is
// `base` itself. Returns an O_PATH descriptor, or -1 and errno: ELOOP for a link on the way,
// ENOTDIR for a file, EXDEV for a way out of `base`, EINVAL for "." or "..".
int openBeneath(int base, const QByteArray &relative);

// Whether the errno of openBeneath means that a folder on the way is not the one the comparison
// saw (a link, a file, a way out).
bool isFolderChange(int error);

} // namespace duomir
