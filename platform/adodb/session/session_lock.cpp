#include "platform/adodb/session/session_lock.hpp"

#include <utility>

namespace ADODB::engine {

SessionLock::SessionLock(std::unique_ptr<Session> session, std::string_view self)
    : session_(std::move(session)), texts_(session_->GetDialect().SessionLock()) {
  if (texts_ == nullptr) throw automation::Error(automation::ErrorNumber::FeatureNotAvailable, "SessionLock");
  if (!texts_->introduce.empty()) session_->Query(texts_->introduce, {automation::Variant(self)});
}

automation::Variant SessionLock::Ask(std::string_view sql) {
  const std::unique_ptr<Rows> rows = session_->Query(sql, {});
  return rows->Next() ? rows->Value(0) : automation::Variant::Null();
}

bool SessionLock::Affirms(std::string_view sql) {
  const automation::Variant answer = Ask(sql);
  return !answer.IsNull() && automation::ToInt64(answer) == 1;
}

bool SessionLock::TryTake() {
  return Affirms(texts_->take);
}

bool SessionLock::IsHeld() noexcept {
  try {
    return Affirms(texts_->isHeld);
  } catch (const std::exception&) {
    return false;
  }
}

std::string SessionLock::Holder() {
  return texts_->holder.empty() ? std::string() : automation::ToTextOrEmpty(Ask(texts_->holder));
}

std::unique_ptr<SessionLock> OpenSessionLock(const std::vector<std::shared_ptr<Provider>>& providers,
                                             std::string_view connectionString, std::string_view self) {
  ConnectionString text = ConnectionString::Parse(connectionString);
  const std::shared_ptr<Provider>& provider = ProviderOf(providers, text);
  if (!provider->ReachesServers()) return nullptr;
  std::unique_ptr<Session> session = provider->Connect(text);
  if (session->GetDialect().SessionLock() == nullptr) return nullptr;
  return std::make_unique<SessionLock>(std::move(session), self);
}

}  // namespace ADODB::engine
