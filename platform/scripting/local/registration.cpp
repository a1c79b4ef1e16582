#include "platform/scripting/local/registration.hpp"

#include <memory>

#include "platform/scripting/dictionary/registration.hpp"
#include "platform/scripting/local/file_system_object.hpp"

namespace Scripting::local {

void RegisterClasses(automation::ClassTable& classes, const std::map<char, std::string>& drives,
                     const std::shared_ptr<base::CreatedFiles>& created) {
  classes.Register(kFileSystemObjectProgId,
                   [drives, created] { return std::make_shared<LocalFileSystem>(drives, created); });
  RegisterDictionary(classes);
}

}  // namespace Scripting::local
