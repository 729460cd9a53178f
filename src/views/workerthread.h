// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QThread>

#include <atomic>
#include <functional>

class imgWindow;

/// A job of an image window beside the main thread, run once. The job reads the image and
/// writes only memory that nobody else looks at before the job is over; the window takes
/// the result over on the main thread.
class WorkerThread : public QThread
{
    Q_OBJECT
public:
    enum Mode { Preview = 0, Mask = 1 };

    /// Belongs to the window. `work` is the job, `result` what the main thread does with
    /// what it made; either may be null.
    WorkerThread(Mode mode, imgWindow *window, std::function<void()> work,
                 std::function<void()> result);
    ~WorkerThread() override;

    const Mode mode;
    imgWindow *const window;

    /// Waits until the job is over and all that it wrote may be read.
    void finish();
    /// To be called on the main thread, after that.
    void takeOver();

signals:
    void ready(const QString &text);

protected:
    void run() override;

private:
    std::function<void()> work, result;
    std::atomic<bool> over{false};
};
