#include "tests/suite/file_handling/shared_place.hpp"

std::vector<std::string> orvane_test::KindsOfPlace() {
  return {"vsftpd", "ftpes", "ftps", "pyftpd"};
}
