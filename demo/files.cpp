#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdint>
#include <ctime>
#include <fstream>
#include <string>
#include <system_error>

#include "demo/demo_suite.hpp"
#include "demo/table.hpp"

namespace demo {
namespace {

namespace fs = std::filesystem;
using automation::AddDays;
using automation::AddHours;

void Write(const fs::path& file, std::string_view content, int hoursOld) {
  fs::create_directories(file.parent_path());
  std::ofstream stream(file, std::ios::binary | std::ios::trunc);
  stream << content;
  stream.close();
  const std::time_t moment = std::time(nullptr) - std::time_t{hoursOld} * 3600;
  const timespec times[2] = {{moment, 0}, {moment, 0}};
  if (!stream || utimensat(AT_FDCWD, file.c_str(), times, 0) != 0) {
    throw fs::filesystem_error("cannot write", file, std::error_code(errno, std::generic_category()));
  }
}

// Young and old files in each folder that the clean-up looks at, and one in a subfolder that it must not
// enter.
void FillSweptFolders(const Place& place) {
  for (const char* folder :
       {"DispatchFiles", "tempAttachments", "ANALYSIS", "Archives", "TS/EndUser/Templates",
        "TS/EndUser/Trees", "TS/Manager/Templates", "TS/Manager/Trees"}) {
    const fs::path path = place.data / folder;
    Write(path / "today.xml", "<dispatch/>\r\n", 1);
    Write(path / "last-week.xml", "<dispatch/>\r\n", 7 * 24);
    Write(path / "last-year.xml", "<dispatch/>\r\n", 365 * 24);
  }
  Write(place.data / "DispatchFiles" / "sub" / "kept.xml", "<dispatch/>\r\n", 365 * 24);
  for (int i = 0; i < 25; ++i) {
    Write(place.data / "HTML" / ("mail" + std::to_string(i) + ".htm"), "<html></html>\r\n", i * 10);
  }
  Write(place.data / "HTML" / "images" / "logo.svg", "<svg xmlns=\"http://www.w3.org/2000/svg\"/>\n", 2000);
}

void FillChats(const Place& place) {
  Table sessions(place.suite, "CHATSESSIONS", {"SESSIONID", "STARTTIME"});
  for (int i = 1; i <= 20; ++i) {
    const std::string name = "chat-" + std::to_string(1000 + i) + ".txt";
    sessions.Add({name, AddHours(place.now.WithoutFraction(), -i)});
    Write(place.data / "CHAT" / name, "Customer: hello\r\nSupport: good morning\r\n", i * 30);
  }
  for (int i = 1; i <= 15; ++i) {
    Write(place.data / "CHAT" / ("chat-" + std::to_string(9000 + i) + ".txt"), "Customer: anybody there?\r\n",
          i * 5);
  }
}

void FillAttachments(const Place& place) {
  const fs::path root = place.data / "SRATTACHMENTS";
  const automation::DateTime now = place.now.WithoutFraction();
  Table files(place.suite, "DATAFILES", {"ID1", "FILENAME", "FILETYPE", "LASTUPLOAD"});

  // Of requests that wait for their customer: young, so they stay and are named in the mails.
  Write(root / "1001Q" / "oil-leak.jpg", "JPEG", 2);
  Write(root / "1001A" / "flange.pdf", "PDF", 1);
  files.Add({1001, "oil-leak.jpg", 1, AddHours(now, -2)});
  files.Add({1001, "flange.pdf", 3, AddHours(now, -1)});
  Write(root / "1101Q" / "photo <1> & more.jpg", "JPEG", 3);
  files.Add({1101, "photo <1> & more.jpg", 1, AddHours(now, -3)});

  // Of drafts: old drafts go with folder and rows; one of them has no folder.
  for (const int id : {2001, 2002, 2003, 2004, 2005}) {
    Write(root / (std::to_string(id) + "Q") / "draft.txt", "draft\r\n", 24 * (id - 1999));
    files.Add({id, "draft.txt", 1, AddDays(now, 1999 - id)});
  }
  Write(root / "2011Q" / "young.txt", "young\r\n", 1);
  files.Add({2011, "young.txt", 1, AddHours(now, -1)});

  // Old attachments: a folder that empties goes, one that holds more stays, and one row has no folder any
  // more.
  Write(root / "3001Q" / "Report.txt", "report\r\n", 24 * 40);
  files.Add({3001, "REPORT.TXT", 1, AddDays(now, -40)});
  Write(root / "3002A" / "answer.pdf", "PDF", 24 * 30);
  Write(root / "3002A" / "not-recorded.pdf", "PDF", 24 * 30);
  files.Add({3002, "answer.pdf", 3, AddDays(now, -30)});
  files.Add({3003, "vanished.zip", 3, AddDays(now, -20)});
  Write(root / "3004Q" / "fresh.txt", "fresh\r\n", 2);
  files.Add({3004, "fresh.txt", 1, AddHours(now, -2)});
  // A folder that no row knows.
  Write(root / "4711Q" / "unknown.bin", "?", 24 * 400);
}

}  // namespace

void FillFiles(const Place& place) {
  FillSweptFolders(place);
  FillChats(place);
  FillAttachments(place);
}

}  // namespace demo
