// What stands between a suite's classes and its jobs while a run is recorded or previewed.
#pragma once

namespace effects {
class ReadListener;
class Recorder;
class ServiceWatch;
}  // namespace effects

namespace orvane_host {

class PreviewWorld;

// All of it must outlive what the runtime's classes make. Nothing is wrapped where there is neither a
// recorder nor a listener to reads.
struct Wiring {
  effects::Recorder* recorder = nullptr;
  bool recordsRows = false;                // changes of the databases as well
  effects::ServiceWatch* watch = nullptr;  // of the directory; may be null
  const PreviewWorld* world = nullptr;  // in which everything is changed, if it is not to be changed at all
  effects::ReadListener* reads = nullptr;  // of record sets and folders; only with a recorder
};

}  // namespace orvane_host
