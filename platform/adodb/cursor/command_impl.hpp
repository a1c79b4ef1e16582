// The command that stands behind ADODB::Command for every provider.
#pragma once

#include "platform/adodb/command.hpp"

namespace ADODB::engine {

class CommandImpl : public Command {
 public:
  void SetActiveConnection(const ConnectionPtr& connection) override { connection_ = connection; }
  void SetCommandText(const Statement& statement) override { statement_ = statement; }
  RecordsetPtr Execute(std::int64_t* recordsAffected, int options) override;
  RecordsetPtr ExecuteDelete(Deleted wanted) override;

 private:
  Connection& RequiredConnection() const;

  ConnectionPtr connection_;
  Statement statement_;
};

}  // namespace ADODB::engine
