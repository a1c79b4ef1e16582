#include "platform/scripting/local/registration.hpp"

#include <memory>

#include "platform/scripting/dictionary/registration.hpp"
#include "platform/scripting/local/file_system_object.hpp"

namespace Scripting::local {

void RegisterClasses(automation::ClassTable& classes, const std::map<char, std::string>& drives,
                     const std::shared_ptr<base::CreatedFiles>& created,
                     const std::shared_ptr<base::FileLayer>& layer,
                     const std::shared_ptr<base::PendingFiles>& pending) {
  classes.Register(kFileSystemObjectProgId,
                   [=] { return std::make_shared<LocalFileSystem>(drives, created, layer, pending); });
  RegisterDictionary(classes);
}

}  // namespace Scripting::local
