#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

// What clang is told about locks (-Wthread-safety), so that it refuses code that touches guarded data without the lock,
// or takes a lock twice. Other compilers are told nothing.
#ifdef __clang__
#define QUOBRIX_THREAD_SAFETY(attribute) __attribute__((attribute))
#else
#define QUOBRIX_THREAD_SAFETY(attribute)
#endif
/// Data that is read and written only while the mutex is held.
#define QUOBRIX_GUARDED_BY(mutex) QUOBRIX_THREAD_SAFETY(guarded_by(mutex))
/// A function that is called only while the mutexes are held.
#define QUOBRIX_REQUIRES(...) QUOBRIX_THREAD_SAFETY(requires_capability(__VA_ARGS__))
/// A function that takes the mutexes itself: not called while they are held.
#define QUOBRIX_EXCLUDES(...) QUOBRIX_THREAD_SAFETY(locks_excluded(__VA_ARGS__))
/// A class whose objects hold a mutex while they live; its constructor and destructor.
#define QUOBRIX_SCOPED_LOCK QUOBRIX_THREAD_SAFETY(scoped_lockable)
#define QUOBRIX_ACQUIRE(...) QUOBRIX_THREAD_SAFETY(acquire_capability(__VA_ARGS__))
#define QUOBRIX_RELEASE(...) QUOBRIX_THREAD_SAFETY(release_capability(__VA_ARGS__))
/// A function that is only reached with the mutex held, for a reason that the compiler cannot see.
#define QUOBRIX_HOLDS(mutex) QUOBRIX_THREAD_SAFETY(assert_capability(mutex))

namespace quobrix {

/// A std::mutex that clang knows about: held through MutexLock.
class QUOBRIX_THREAD_SAFETY(capability("mutex")) Mutex {
private:
    friend class MutexLock;
    friend class MutexUnlock;

    std::mutex mutex_;
};

/// Holds a mutex while it lives.
class QUOBRIX_SCOPED_LOCK MutexLock {
public:
    explicit MutexLock(Mutex& mutex) QUOBRIX_ACQUIRE(mutex) : lock_(mutex.mutex_) {}
    ~MutexLock() QUOBRIX_RELEASE() {}
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

    /// Lets go of the mutex until CHANGED is notified, or for no reason: ask again what was waited for.
    void wait(std::condition_variable& changed) { changed.wait(lock_); }
    /// The same, but no longer than until TIME; false when that has come.
    bool waitUntil(std::condition_variable& changed, std::chrono::steady_clock::time_point time) {
        return changed.wait_until(lock_, time) == std::cv_status::no_timeout;
    }

private:
    std::unique_lock<std::mutex> lock_;
};

/// Lets go of a mutex that is held while it lives.
class QUOBRIX_SCOPED_LOCK MutexUnlock {
public:
    explicit MutexUnlock(Mutex& mutex) QUOBRIX_RELEASE(mutex) : mutex_(mutex.mutex_) { mutex_.unlock(); }
    ~MutexUnlock() QUOBRIX_RELEASE() { mutex_.lock(); }
    MutexUnlock(const MutexUnlock&) = delete;
    MutexUnlock& operator=(const MutexUnlock&) = delete;

private:
    std::mutex& mutex_;
};

} // namespace quobrix
