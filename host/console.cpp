#include "host/commands.hpp"

namespace orvane::host {

void Print(const Console& console, MessageKind kind, std::string_view text) {
  switch (kind) {
    case MessageKind::Outcome:
      console.out << text << std::endl;
      return;
    case MessageKind::Error:
      console.err << "orvane-host: " << text << std::endl;
      return;
    case MessageKind::Warning:
      console.err << "warning: " << text << std::endl;
      return;
    case MessageKind::Note:
      console.err << "note: " << text << std::endl;
      return;
  }
}

}  // namespace orvane::host
