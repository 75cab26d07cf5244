#include "gallery-host/page/Mailbox.h"

#include <utility>

namespace host::page {

void Mailbox::Post(Task task) {
    const KXP::MutexLock lock(mutex_);
    tasks_.push_back(std::move(task));
    if (tasks_.size() == 1) wakeUp_.Signal();
}

void Mailbox::RunAll() {
    std::vector<Task> tasks;
    {
        const KXP::MutexLock lock(mutex_);
        tasks.swap(tasks_);
        wakeUp_.Clear();
    }
    for (const Task& task : tasks)
        task();
}

}  // namespace host::page
