// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/workerthread.h"

#include "views/imgwindow.h"

WorkerThread::WorkerThread(Mode jobMode, imgWindow *of, std::function<void()> job,
                           std::function<void()> afterwards)
    : QThread(of), mode(jobMode), window(of), work(std::move(job)), result(std::move(afterwards))
{
}

WorkerThread::~WorkerThread()
{
    finish();
}

void WorkerThread::run()
{
    if (work)
        work();
    over.store(true, std::memory_order_release);
    emit ready(QStringLiteral("ready"));
}

/// The atomic says it once more in a way that race detectors follow.
void WorkerThread::finish()
{
    wait();
    over.load(std::memory_order_acquire);
}

void WorkerThread::takeOver()
{
    if (result)
        result();
}
