#include "effects/effect.hpp"

namespace effects {
namespace {

std::string_view NameOf(ADODB::Change change, bool one) {
  switch (change) {
    case ADODB::Change::Insert:
      return one ? "row.insert" : "rows.insert";
    case ADODB::Change::Update:
      return one ? "row.update" : "rows.update";
    case ADODB::Change::Delete:
      break;
  }
  return one ? "row.delete" : "rows.delete";
}

struct Op {
  std::string_view operator()(const RowChange& row) const { return NameOf(row.change, true); }
  std::string_view operator()(const RowsChange& rows) const { return NameOf(rows.change, false); }
  std::string_view operator()(const TransactionStep& step) const {
    switch (step.kind) {
      case TransactionStep::Kind::Begin:
        return "begin";
      case TransactionStep::Kind::Commit:
        return "commit";
      case TransactionStep::Kind::Rollback:
        break;
    }
    return "rollback";
  }
  std::string_view operator()(const FileChange& file) const {
    switch (file.kind) {
      case FileChange::Kind::Write:
        return "file.write";
      case FileChange::Kind::Delete:
        return "file.delete";
      case FileChange::Kind::CreateFolder:
        return "folder.create";
      case FileChange::Kind::DeleteFolder:
        return "folder.delete";
      case FileChange::Kind::SaveDocument:
        break;
    }
    return "document.save";
  }
  std::string_view operator()(const MailSending&) const { return "mail.send"; }
  std::string_view operator()(const SharedChange& shared) const {
    switch (shared.kind) {
      case SharedChange::Kind::Store:
        return "shared.store";
      case SharedChange::Kind::Fetch:
        return "shared.fetch";
      case SharedChange::Kind::Delete:
        return "shared.delete";
      case SharedChange::Kind::Mark:
        break;
    }
    return "shared.mark";
  }
  std::string_view operator()(const ComponentCall& call) const {
    return call.kind == ComponentCall::Kind::Erp ? "erp.call" : "event";
  }
};

struct Subject {
  std::string_view operator()(const RowChange& row) const { return row.table; }
  std::string_view operator()(const RowsChange& rows) const { return rows.table; }
  std::string_view operator()(const TransactionStep&) const { return {}; }
  std::string_view operator()(const FileChange& file) const { return file.folder; }
  std::string_view operator()(const MailSending&) const { return {}; }
  std::string_view operator()(const SharedChange& shared) const { return shared.folder; }
  std::string_view operator()(const ComponentCall& call) const { return call.component; }
};

}  // namespace

std::string_view OpOf(const Effect& effect) {
  return std::visit(Op(), effect);
}

std::string_view SubjectOf(const Effect& effect) {
  return std::visit(Subject(), effect);
}

std::size_t CountOf(const Effect& effect) {
  const auto* rows = std::get_if<RowsChange>(&effect);
  return rows == nullptr ? 1 : rows->keys.size() + rows->withoutKeys;
}

}  // namespace effects
