// Sets an environment variable for as long as it lives. A test that has other threads must not use it.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>
#include <utility>

class ScopedEnv {
  public:
    ScopedEnv(std::string name, const std::string& value) : name_(std::move(name)) {
        if (const char* old = std::getenv(name_.c_str())) old_ = old;
        setenv(name_.c_str(), value.c_str(), 1);
    }
    ~ScopedEnv() { old_ ? setenv(name_.c_str(), old_->c_str(), 1) : unsetenv(name_.c_str()); }
    ScopedEnv(const ScopedEnv&) = delete;
    ScopedEnv& operator=(const ScopedEnv&) = delete;

  private:
    std::string name_;
    std::optional<std::string> old_;
};
