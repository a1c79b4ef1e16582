#include <exception>
#include <filesystem>
#include <optional>
#include <string>

#include "demo/demo_suite.hpp"
#include "host/commands.hpp"
#include "host/init/connections.hpp"
#include "host/init/databases.hpp"
#include "host/init/owner.hpp"
#include "host/init/suite_files.hpp"
#include "platform/automation/runtime.hpp"
#include "run/exit_codes.hpp"
#include "suite/composition/composition.hpp"
#include "suite/composition/suite_home.hpp"
#include "suite/configuration/site_file.hpp"

namespace orvane::host {
namespace {

constexpr const char* kEmbeddedDatabase = "Provider=SQLite;Data Source=db\\orvane.sqlite";
constexpr const char* kEmbeddedCatalogue = "Provider=SQLite;Data Source=db\\ecatalog.sqlite";

class SuiteMaker {
 public:
  // Embedded databases without connections.
  SuiteMaker(const SuiteHome& home, const std::optional<Connections>& connections, bool demo)
      : home_(home),
        database_(connections ? connections->database : kEmbeddedDatabase),
        catalogue_(connections ? connections->catalogue : kEmbeddedCatalogue),
        embedded_(!connections),
        demo_(demo) {}

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

std::optional<Connections> ConnectionsOf(const Arguments& arguments) {
  if (arguments.connectionsFrom) return ReadConnections(*arguments.connectionsFrom);
  if (arguments.database) return Connections{*arguments.database, *arguments.catalogue};
  return std::nullopt;
}

}  // namespace

int InitSuite(const Arguments& arguments, const Console& console) {
  const SuiteHome home(arguments.home);
  const std::optional<Connections> connections = ConnectionsOf(arguments);
  std::optional<Owner> owner;
  if (arguments.owner) {
    owner = FindOwner(*arguments.owner);
    if (!owner) throw UsageError("no account \"" + *arguments.owner + "\" on this machine");
  }
  std::error_code failed;
  const bool madeHome = !std::filesystem::exists(home.Path(), failed);
  bool touched = false;
  PlaceForOwner place;
  try {
    if (!IsFree(home)) {
      console.err
          << "orvane-host: " << home.Path().string()
          << ": there is something in this place already; a suite is made in a new or empty directory\n";
      return kCannotCreate;
    }
    touched = true;
    if (owner) place.Make(*owner, home);
    const ActsAs account(owner);
    SuiteMaker(home, connections, arguments.demo).Make();
  } catch (const std::exception& error) {
    console.err << "orvane-host: " << home.Path().string()
                << ": the suite could not be made: " << error.what() << '\n';
    if (touched) {
      const ActsAs account(owner);
      RemoveSuiteFiles(home, madeHome);
    }
    place.Remove();
    return kCannotCreate;
  }
  console.out << "Made a suite in " << home.Path().string()
              << (arguments.demo ? ", with the demo's data" : "") << ".\nRun a job:  orvane-host run --home "
              << home.Path().string() << " DormantUserExpiry\n";
  return kOk;
}

}  // namespace orvane::host
