#pragma once

// One creation at a time on this host: two consoles that ran at once would each remove or replace
// the other's password file before its tool had read it, and rebuild the directory under each
// other. The lock is a file under /run held with flock(2); the system drops it with the last
// descriptor, so a console that dies frees it.
class CreationLock
{
public:
    CreationLock() = default;
    CreationLock(const CreationLock &) = delete;
    CreationLock &operator=(const CreationLock &) = delete;
    ~CreationLock() { release(); }

    enum Result { Taken, HeldElsewhere, Unavailable };
    // Takes the lock without waiting. Unavailable: the file could not be opened (errno says why).
    Result take();
    void release();

    static const char *path();

private:
    int _fd = -1;
};
