#include "tests/doubles/fake_file_handling.hpp"

#include <utility>

#include "components/interfaces/file_handling.hpp"
#include "platform/automation/error.hpp"

namespace orvane_test {
namespace {

using automation::Variant;
using OrvCommonMTS::FolderKind;

std::string Number(FolderKind kind) {
  return std::to_string(static_cast<int>(kind));
}

class FakeFileHandling : public OrvCommonMTS::FileHandling {
 public:
  explicit FakeFileHandling(std::shared_ptr<FileHandlingState> state) : state_(std::move(state)) {
    ++state_->created;
    ++state_->alive;
  }
  ~FakeFileHandling() override { --state_->alive; }

  bool FileExists(std::string_view name, const automation::VariantArray& kinds) override {
    std::string list;
    for (const Variant& kind : kinds) list += (list.empty() ? "" : ",") + automation::ToText(kind);
    Note("FileExists(" + std::string(name) + ",[" + list + "])");
    const bool exists = std::filesystem::exists(state_->folder / name);
    if (state_->onFileExists) state_->onFileExists(std::string(name));
    return exists;
  }
  void SetInUse(std::string_view name, std::int16_t state) override {
    Note("SetInUse(" + std::string(name) + "," + std::to_string(state) + ")");
    if (state != 0) {
      state_->marked.emplace(name);
    } else {
      state_->marked.erase(std::string(name));
    }
  }
  void FetchFile(std::string_view ftpPath, std::string_view name, std::string_view fullPath, FolderKind kind,
                 std::int16_t mode) override {
    Note("FetchFile(" + std::string(ftpPath) + "," + std::string(name) + "," + std::string(fullPath) + "," +
         Number(kind) + "," + std::to_string(mode) + ")");
    if (state_->onFetch) state_->onFetch(std::string(name));
  }
  bool IsInUse(std::string_view name) override {
    Note("IsInUse(" + std::string(name) + ")");
    return state_->inUse;
  }
  void StoreFile(std::string_view fullPath, FolderKind kind) override {
    Note("StoreFile(" + std::string(fullPath) + "," + Number(kind) + ")");
    if (state_->onStore) state_->onStore(std::string(fullPath));
  }
  Variant DeleteAgedFiles(std::string_view path, std::int32_t keepMinutes, FolderKind kind) override {
    Note("DeleteAgedFiles(" + std::string(path) + ", " + std::to_string(keepMinutes) + ", " + Number(kind) +
         ")");
    return 0;
  }
  Variant DeleteListedItems(std::string_view path, const Variant& names, FolderKind kind) override {
    std::string list;
    for (const Variant& name : *std::get<std::shared_ptr<const automation::VariantArray>>(names.Get())) {
      list += (list.empty() ? "" : "|") + std::get<std::string>(name.Get());
    }
    Note("DeleteListedItems(" + std::string(path) + ", [" + list + "], " + Number(kind) + ")");
    return 0;
  }

 private:
  void Note(std::string call) {
    const bool fails = !state_->failingMember.empty() && call.starts_with(state_->failingMember);
    state_->calls.push_back(std::move(call));
    if (state_->before) state_->before();
    if (fails) throw automation::Error(-2147467259, "OrvCommonMTS.FileHandling", "not reachable");
  }

  std::shared_ptr<FileHandlingState> state_;
};

}  // namespace

void RegisterFakeFileHandling(automation::ClassTable& classes,
                              const std::shared_ptr<FileHandlingState>& state) {
  classes.Register(OrvCommonMTS::kFileHandlingProgId, [state] {
    if (!state->creatable) throw automation::Error(automation::ErrorNumber::CannotCreateObject);
    return std::make_shared<FakeFileHandling>(state);
  });
}

}  // namespace orvane_test
