#include "platform/scripting/local/registration.hpp"

#include <memory>

#include "platform/scripting/dictionary/registration.hpp"
#include "platform/scripting/local/file_system_object.hpp"

namespace Scripting::local {

void RegisterClasses(automation::ClassTable& classes, const std::map<char, std::string>& drives) {
  classes.Register(kFileSystemObjectProgId, [drives] { return std::make_shared<LocalFileSystem>(drives); });
  RegisterDictionary(classes);
}

}  // namespace Scripting::local
