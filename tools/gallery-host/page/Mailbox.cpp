#include "gallery-host/page/Mailbox.h"

#include <cerrno>
#include <cstring>
#include <string>
#include <utility>

#include <sys/eventfd.h>
#include <unistd.h>

#include "gallery-host/base/Failure.h"

namespace host::page {

Mailbox::Mailbox() : fd_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (!fd_.IsOpen())
        throw Failure(kExitFailed, std::string("cannot make an event descriptor: ") + std::strerror(errno));
}

void Mailbox::Post(Task task) {
    const KXP::MutexLock lock(mutex_);
    tasks_.push_back(std::move(task));
    (void)eventfd_write(fd_.get(), 1);
}

void Mailbox::RunAll() {
    std::vector<Task> tasks;
    {
        const KXP::MutexLock lock(mutex_);
        tasks.swap(tasks_);
        eventfd_t count = 0;
        (void)eventfd_read(fd_.get(), &count);
    }
    for (const Task& task : tasks)
        task();
}

}  // namespace host::page
