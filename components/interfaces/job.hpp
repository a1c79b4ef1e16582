// What a service host calls: every job class of the library has this entry point.
#pragma once

#include "platform/automation/object.hpp"

namespace OrvaneProcess {

class Job : public automation::Object {
 public:
  // One complete run. Returns normally whatever happens inside.
  virtual void Run() = 0;
};

}  // namespace OrvaneProcess
