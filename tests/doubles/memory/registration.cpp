#include "tests/doubles/memory/registration.hpp"

#include <memory>

#include "platform/scripting/dictionary/registration.hpp"
#include "tests/doubles/memory/file_system_object.hpp"

namespace Scripting::memory {

void RegisterClasses(automation::ClassTable& classes, const MemoryDiskPtr& disk) {
  classes.Register(kFileSystemObjectProgId, [disk] { return std::make_shared<MemoryFileSystem>(disk); });
  RegisterDictionary(classes);
}

}  // namespace Scripting::memory
