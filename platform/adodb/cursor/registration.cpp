#include "platform/adodb/registration.hpp"

#include "platform/adodb/cursor/command_impl.hpp"
#include "platform/adodb/cursor/connection_impl.hpp"
#include "platform/adodb/cursor/recordset_impl.hpp"

namespace ADODB {

void RegisterClasses(automation::ClassTable& classes,
                     std::vector<std::shared_ptr<engine::Provider>> providers,
                     std::function<std::chrono::steady_clock::time_point()> clock, ChangeObserver* observer,
                     std::function<void()> beforeChange) {
  if (!clock) clock = &engine::CoarseNow;
  auto pool = std::make_shared<engine::Pool>(std::move(providers), std::move(clock), observer,
                                             std::move(beforeChange));
  classes.RegisterAs<Connection>("ADODB.Connection",
                                 [pool] { return std::make_shared<engine::ConnectionImpl>(pool); });
  classes.RegisterAs<Recordset>("ADODB.Recordset", [] { return std::make_shared<engine::RecordsetImpl>(); });
  classes.RegisterAs<Command>("ADODB.Command", [] { return std::make_shared<engine::CommandImpl>(); });
}

}  // namespace ADODB
