#include "tests/cleanup/fake_file_handling.hpp"

#include <stdexcept>

#include "components/interfaces/file_handling.hpp"
#include "platform/automation/error.hpp"

namespace orvane_test {
namespace {

using automation::Variant;
using OrvCommonMTS::FolderKind;

class FakeFileHandling : public OrvCommonMTS::FileHandling {
 public:
  explicit FakeFileHandling(std::shared_ptr<FileHandlingCalls> record) : record_(std::move(record)) {
    ++record_->created;
    ++record_->alive;
  }
  ~FakeFileHandling() override { --record_->alive; }

  Variant DeleteAgedFiles(std::string_view path, std::int32_t keepMinutes, FolderKind kind) override {
    Record("DeleteAgedFiles(" + std::string(path) + ", " + std::to_string(keepMinutes) + ", " + Number(kind));
    return 0;
  }
  Variant DeleteListedItems(std::string_view path, const Variant& names, FolderKind kind) override {
    std::string list;
    for (const Variant& name : *std::get<std::shared_ptr<const automation::VariantArray>>(names.Get())) {
      list += (list.empty() ? "" : "|") + std::get<std::string>(name.Get());
    }
    Record("DeleteListedItems(" + std::string(path) + ", [" + list + "], " + Number(kind));
    return 0;
  }

  bool FileExists(std::string_view, const automation::VariantArray&) override { throw NotForThisJob(); }
  void SetInUse(std::string_view, std::int16_t) override { throw NotForThisJob(); }
  void FetchFile(std::string_view, std::string_view, std::string_view, FolderKind, std::int16_t) override {
    throw NotForThisJob();
  }
  bool IsInUse(std::string_view) override { throw NotForThisJob(); }
  void StoreFile(std::string_view, FolderKind) override { throw NotForThisJob(); }

 private:
  static std::logic_error NotForThisJob() { return std::logic_error("not a member that the job may call"); }
  static std::string Number(FolderKind kind) { return std::to_string(static_cast<int>(kind)) + ")"; }
  void Record(std::string call) {
    record_->calls.push_back(std::move(call));
    if (record_->before) record_->before();
  }

  std::shared_ptr<FileHandlingCalls> record_;
};

}  // namespace

std::shared_ptr<FileHandlingCalls> RegisterFakeFileHandling(automation::ClassTable& classes) {
  auto record = std::make_shared<FileHandlingCalls>();
  classes.Register(OrvCommonMTS::kFileHandlingProgId, [record] {
    if (!record->creatable) throw automation::Error(automation::ErrorNumber::CannotCreateObject);
    return std::make_shared<FakeFileHandling>(record);
  });
  return record;
}

}  // namespace orvane_test
