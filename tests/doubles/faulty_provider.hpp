// A provider that fails on demand, in front of a real one.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/adodb/session/provider.hpp"
#include "platform/automation/error.hpp"

namespace orvane_test {

// What shall go wrong, and what was seen. Shared by the provider and all its sessions; not for several
// threads.
struct Faults {
  // A statement that contains this text fails (letter for letter, in the engine's SQL); empty: none.
  std::string failMatching;
  // The n-th statement from now fails, 1 being the next; counts down to 0, which is none.
  std::size_t failAfter = 0;
  bool failConnect = false;
  bool failCommit = false;
  bool sessionsDie = false;  // after a failure the session counts as dead: Reset and Ping answer false
  automation::Error error =
      automation::Error(-2147467259, "Faulty", "disk I/O error").WithEngineCodes("HY000", 10);

  // Called with each statement before it is sent.
  std::function<void(std::string_view sql)> before;

  std::vector<std::string> statements;  // all that were sent, in order
  std::size_t rows = 0;                 // that were read
  int connects = 0;
  int openSessions = 0;
  int openRows = 0;  // results that nobody has let go of
  int mostOpenRows = 0;
  int begins = 0;
  int commits = 0;
  int rollbacks = 0;
};

class FaultyProvider : public ADODB::engine::Provider {
 public:
  FaultyProvider(std::shared_ptr<ADODB::engine::Provider> inner, std::shared_ptr<Faults> faults)
      : inner_(std::move(inner)), faults_(std::move(faults)) {}
  std::string_view Name() const override { return inner_->Name(); }
  std::unique_ptr<ADODB::engine::Session> Connect(const ADODB::engine::ConnectionString& text) override;

 private:
  std::shared_ptr<ADODB::engine::Provider> inner_;
  std::shared_ptr<Faults> faults_;
};

}  // namespace orvane_test
