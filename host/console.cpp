#include "host/commands.hpp"

namespace orvane::host {

void Print(const Console& console, Telling kind, std::string_view text) {
  switch (kind) {
    case Telling::Outcome:
      console.out << text << std::endl;
      return;
    case Telling::Message:
      console.err << "orvane-host: " << text << std::endl;
      return;
    case Telling::Warning:
      console.err << "warning: " << text << std::endl;
      return;
    case Telling::Note:
      console.err << "note: " << text << std::endl;
      return;
  }
}

}  // namespace orvane::host
