#include "platform/adodb/session/provider.hpp"

#include "platform/adodb/sql/engine_error.hpp"
#include "platform/adodb/sql/tokens.hpp"

namespace ADODB::engine {

const std::shared_ptr<Provider>& ProviderOf(const std::vector<std::shared_ptr<Provider>>& providers,
                                            ConnectionString& text) {
  const std::string name = text.Value("Provider").value_or("MSDASQL");
  for (const std::shared_ptr<Provider>& provider : providers) {
    if (!EqualsIgnoringAsciiCase(provider->Name(), name)) continue;
    text.Remove("Provider");
    return provider;
  }
  throw automation::Error(kProviderNotFound, "ADODB.Connection",
                          "Provider cannot be found. It may not be properly installed.");
}

}  // namespace ADODB::engine
