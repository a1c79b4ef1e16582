// The suite's configuration component: "Vantrel.Configuration".
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/automation/export.hpp"
#include "platform/automation/object.hpp"
#include "platform/automation/variant.hpp"

namespace Vantrel {

inline constexpr std::string_view kConfigurationProgId = "Vantrel.Configuration";

class ORVANE_EXPORT Configuration : public automation::Object {
 public:
  // A path inside the installation whose parent folder is the suite's root; the job logs lie beside it.
  virtual std::string RootPath() const = 0;

  // Chooses the product whose connections GetConnectionString answers; `flag` is always 0.
  virtual void SelectProduct(std::string_view product, std::int32_t flag) = 0;
  // The ADO connection string of a connection of the selected product; raises when there is none. The
  // reference holds until the next call.
  virtual const std::string& GetConnectionString(std::string_view connection) = 0;

  virtual std::string getInstallDir() = 0;

  // Loads the values, from the component's own file or from the one named; needed before GetValue.
  virtual void Load() = 0;
  virtual void LoadFile(std::string_view path) = 0;
  // The value of a key; raises, naming section and key, when there is none.
  virtual automation::Variant GetValue(std::string_view section, std::string_view key) const = 0;
};
using ConfigurationPtr = std::shared_ptr<Configuration>;

}  // namespace Vantrel
