#include "demo/demo_suite.hpp"

namespace demo {
namespace {

void InTransaction(const ADODB::ConnectionPtr& connection, const Place& place, void (*fill)(const Place&)) {
  connection->BeginTrans();
  try {
    fill(place);
  } catch (...) {
    connection->RollbackTrans();
    throw;
  }
  connection->CommitTrans();
}

}  // namespace

void Fill(const Place& place) {
  place.catalogue->BeginTrans();
  try {
    InTransaction(place.suite, place, &FillSettings);
  } catch (...) {
    place.catalogue->RollbackTrans();
    throw;
  }
  place.catalogue->CommitTrans();
  FillPeople(place);
  InTransaction(place.suite, place, &FillProspects);
  InTransaction(place.suite, place, &FillQuestions);
  InTransaction(place.suite, place, &FillHistory);
  InTransaction(place.suite, place, &FillFiles);
}

}  // namespace demo
