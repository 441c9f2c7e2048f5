#pragma once

#include "base/mutex.h"

#include <QElapsedTimer>
#include <QString>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>

class QEventLoop;
class QWidget;

namespace quobrix {

/// Whether work on another thread is done, seen from both threads. It must live until finish() has returned, which may
/// be after the one that waits has woken.
class Completion {
public:
    /// For the thread that works.
    void finish();

    bool isDone();
    /// Waits no longer than TIME; false if it is not done then.
    bool waitFor(std::chrono::milliseconds time);
    /// LOOP (none: no loop) is left when it is done. True if it is already.
    bool leaveWhenDone(QEventLoop* loop);

private:
    Mutex mutex_;
    std::condition_variable changed_;
    bool done_ QUOBRIX_GUARDED_BY(mutex_) = false;
    QEventLoop* loop_ QUOBRIX_GUARDED_BY(mutex_) = nullptr;
};

/// What a person who waits is shown.
struct WaitState {
    enum class Cancel { NotOffered, NotNow, Offered };

    QString what;           ///< is being done
    QString how{};          ///< it stands, in words
    double done = 0;        ///< of all of it, 0 to 1
    bool measurable = true; ///< else something moves
    Cancel cancel = Cancel::Offered;
};

/// The one way in which a window waits for work on another thread. What is over in a blink is waited for without more
/// ado; then the window paints, under a wait cursor, and takes no input; what takes a person's patience is shown in a
/// dialog: what is being done, how far it is, for how long, and Cancel. User-interface thread only.
class Waiting {
public:
    struct Times {
        std::chrono::milliseconds blink{30};     ///< the longest that the user-interface thread stands still
        std::chrono::milliseconds patience{500}; ///< the longest that a person waits without being told for what
    };
    using Look = std::function<WaitState()>;

    /// The dialog comes up over the modal one, or WINDOW (none: over nothing) if there is none. NAME is its object name
    /// and begins those of its parts: Text, Step, Time, Bar. CANCEL is called when a person wants the work to end.
    Waiting(QWidget* window, const char* name, Times times, std::function<void()> cancel);
    ~Waiting();

    /// Returns when WORK is done. May be called again for what a person takes for the same wait: the dialog stays
    /// between. LOOK tells how it stands; it is called until the next call, or the end of this.
    void until(Completion& work, Look look);

private:
    class Dialog;

    QWidget* window_;
    const char* name_;
    const Times times_;
    std::function<void()> cancel_;
    QElapsedTimer since_;
    std::unique_ptr<Dialog> dialog_;
};

} // namespace quobrix
