// A time that must not pass.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace orvane {

class Deadline {
 public:
  // `passed` is called on a thread of its own when it is `after` since Begin(), unless this object has gone.
  Deadline(std::chrono::seconds after, std::function<void()> passed);
  ~Deadline();
  Deadline(const Deadline&) = delete;
  Deadline& operator=(const Deadline&) = delete;

  // Later calls change nothing.
  void Begin();

 private:
  void Wait();

  const std::chrono::seconds after_;
  const std::function<void()> passed_;
  std::mutex mutex_;
  std::condition_variable over_;
  bool isOver_ = false;
  std::thread thread_;
};

}  // namespace orvane
