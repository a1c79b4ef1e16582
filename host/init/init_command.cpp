#include <exception>
#include <filesystem>
#include <string>

#include "demo/demo_suite.hpp"
#include "host/commands.hpp"
#include "host/composition.hpp"
#include "host/exit_codes.hpp"
#include "host/init/databases.hpp"
#include "host/init/suite_files.hpp"
#include "host/suite_home.hpp"
#include "platform/automation/runtime.hpp"
#include "suite/configuration/site_file.hpp"

namespace orvane_host {
namespace {

constexpr const char* kEmbeddedDatabase = "Provider=SQLite;Data Source=db\\orvane.sqlite";
constexpr const char* kEmbeddedCatalogue = "Provider=SQLite;Data Source=db\\ecatalog.sqlite";

class SuiteMaker {
 public:
  SuiteMaker(const SuiteHome& home, const Arguments& arguments)
      : home_(home),
        database_(arguments.database.value_or(kEmbeddedDatabase)),
        catalogue_(arguments.catalogue.value_or(kEmbeddedCatalogue)),
        embedded_(!arguments.database),
        demo_(arguments.demo) {}

  void Make() {
    const EngineEntry& engine = EngineOf(database_);
    const EngineEntry& catalogueEngine = EngineOf(catalogue_);
    MakeSuiteFiles(home_, database_, catalogue_);
    automation::Runtime runtime;
    RegisterSuite(runtime, home_, Vantrel::SiteFile::Read(home_.SiteConfiguration()));
    const automation::RuntimeScope scope(runtime);
    // Jobs open databases and never make them: a wrong path must not become an empty suite.
    const std::string creation = embedded_ ? ";Mode=ReadWriteCreate" : "";
    const ADODB::ConnectionPtr suite = OpenDatabase(database_ + creation);
    const ADODB::ConnectionPtr catalogue = OpenDatabase(catalogue_ + creation);
    MakeSuiteTables(engine, suite);
    MakeCatalogueTables(catalogueEngine, catalogue);
    FillSuite(suite);
    FillCatalogue(catalogue);
    if (demo_) {
      demo::Fill({.suite = suite,
                  .catalogue = catalogue,
                  .data = home_.Path() / "Data",
                  .directory = home_.Directory(),
                  .now = automation::Now()});
    }
    catalogue->Close();
    suite->Close();
  }

 private:
  const SuiteHome& home_;
  const std::string database_;
  const std::string catalogue_;
  const bool embedded_;
  const bool demo_;
};

}  // namespace

int InitSuite(const Arguments& arguments, const Console& console) {
  const SuiteHome home(arguments.home);
  std::error_code failed;
  const bool madeHome = !std::filesystem::exists(home.Path(), failed);
  bool touched = false;
  try {
    if (!IsFree(home)) {
      console.err
          << "orvane-host: " << home.Path().string()
          << ": there is something in this place already; a suite is made in a new or empty directory\n";
      return kCannotCreate;
    }
    touched = true;
    SuiteMaker(home, arguments).Make();
  } catch (const std::exception& error) {
    console.err << "orvane-host: " << home.Path().string()
                << ": the suite could not be made: " << error.what() << '\n';
    if (touched) RemoveSuiteFiles(home, madeHome);
    return kCannotCreate;
  }
  console.out << "Made a suite in " << home.Path().string()
              << (arguments.demo ? ", with the demo's data" : "") << ".\nRun a job:  orvane-host run --home "
              << home.Path().string() << " DormantUserExpiry\n";
  return kOk;
}

}  // namespace orvane_host
