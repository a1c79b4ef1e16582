#include "tests/power/device.hpp"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <tuple>
#include <utility>

namespace orvane_test {
namespace {

constexpr std::size_t kSector = 512;

// How much of what is not synced a seed keeps of one file or folder: nothing, about half, everything.
int DrawChance(std::mt19937_64& draw) {
  return static_cast<int>(draw() % 3) * 50;
}
bool Drawn(int chance, std::mt19937_64& draw) {
  return static_cast<int>(draw() % 100) < chance;
}

void Put(std::string& bytes, std::size_t offset, std::string_view data) {
  if (bytes.size() < offset + data.size()) bytes.resize(offset + data.size(), '\0');
  std::copy(data.begin(), data.end(), bytes.begin() + static_cast<std::ptrdiff_t>(offset));
}

}  // namespace

std::vector<Change> ReadChangeLog(const std::filesystem::path& file) {
  std::vector<Change> changes;
  std::ifstream stream(file, std::ios::binary);
  const auto read = [&](std::size_t size) {
    std::string text(size, '\0');
    if (!stream.read(text.data(), static_cast<std::streamsize>(size))) {
      throw std::runtime_error("a record that is cut off in " + file.string());
    }
    return text;
  };
  while (stream.peek() != std::ifstream::traits_type::eof()) {
    Change next;
    const std::string head = read(sizeof next.what);
    std::memcpy(&next.what, head.data(), head.size());
    next.name = read(next.what.name_size);
    next.otherName = read(next.what.other_name_size);
    next.data = read(next.what.data_size);
    changes.push_back(std::move(next));
  }
  return changes;
}

Device::Device(const Tree& tree) {
  std::map<std::string, Node> paths;
  for (const auto& [path, content] : tree) {
    const Node node = items_.size();
    const std::size_t slash = path.rfind('/');
    const std::string parent = slash == std::string::npos ? "" : path.substr(0, slash);
    if (!path.empty()) items_[paths.at(parent)].names[path.substr(slash + 1)] = node;
    paths[path] = numbers_[content.node] = node;
    items_.push_back({content, {}, {}, {}});
  }
  for (Item& item : items_) item.currentNames = item.names;
}

std::optional<Device::Node> Device::Find(std::uint64_t number) const {
  const auto found = numbers_.find(number);
  return found == numbers_.end() ? std::nullopt : std::optional(found->second);
}

void Device::Apply(const Change& next) {
  ++applied_;
  const change& what = next.what;
  const auto kind = static_cast<change_kind>(what.kind);
  if (kind == CHANGE_ALL_SYNCED) return SyncAll();
  if (kind <= CHANGE_RENAMED) {
    const std::optional<Node> folder = Find(what.folder);
    if (!folder) return;
    auto& names = items_[*folder].currentNames;
    if (kind == CHANGE_MADE) {
      items_.push_back({{what.mode, next.data, 0, std::nullopt}, {}, {}, {}});
      numbers_[what.node] = items_.size() - 1;
      Rename({{*folder, next.name, items_.size() - 1}});
    } else if (kind == CHANGE_LINKED) {
      Rename({{*folder, next.name, Find(what.node)}});
    } else if (kind == CHANGE_REMOVED) {
      Rename({{*folder, next.name, std::nullopt}});
    } else {
      Rename({{*folder, next.name, std::nullopt},
              {Find(what.other_folder).value(), next.otherName, names.at(next.name)}});
    }
    return;
  }
  const std::optional<Node> node = Find(what.node);
  if (!node) return;
  if (kind == CHANGE_SYNCED || kind == CHANGE_DATA_SYNCED) {
    if (S_ISDIR(items_[*node].content.mode)) SyncFolder(*node);
    return SyncFile(*node, kind == CHANGE_DATA_SYNCED);
  }
  items_[*node].pieces.push_back({kind, what.offset, what.mode, next.data});
}

void Device::Rename(const std::vector<NewName>& names) {
  NameChange change{names, {}};
  for (const NewName& name : names) {
    auto& current = items_[name.folder].currentNames;
    if (name.node) {
      current[name.name] = *name.node;
    } else {
      current.erase(name.name);
    }
    change.unsyncedFolders.insert(name.folder);
  }
  nameChanges_.push_back(std::move(change));
}

bool Device::MeetOnAName(const NameChange& one, const NameChange& other) {
  return std::any_of(one.names.begin(), one.names.end(), [&](const NewName& name) {
    return std::any_of(other.names.begin(), other.names.end(), [&](const NewName& another) {
      return name.folder == another.folder && name.name == another.name;
    });
  });
}

void Device::SyncFolder(Node folder) {
  for (NameChange& change : nameChanges_) change.unsyncedFolders.erase(folder);
  // What a change that is kept builds upon is kept with it, in whichever folder.
  for (std::size_t i = nameChanges_.size(); i-- > 0;) {
    if (!nameChanges_[i].unsyncedFolders.empty()) continue;
    for (std::size_t earlier = 0; earlier < i; ++earlier) {
      if (MeetOnAName(nameChanges_[earlier], nameChanges_[i])) nameChanges_[earlier].unsyncedFolders.clear();
    }
  }
  NameChanges left;
  for (NameChange& change : nameChanges_) {
    if (change.unsyncedFolders.empty()) {
      Take(change, items_);
    } else {
      left.push_back(std::move(change));
    }
  }
  nameChanges_ = std::move(left);
}

void Device::SyncFile(Node file, bool dataAlone) {
  Item& item = items_[file];
  std::vector<Piece> left;
  for (Piece& piece : item.pieces) {
    if (dataAlone && piece.kind == CHANGE_MODE) {
      left.push_back(std::move(piece));
    } else {
      Take(piece, item);
    }
  }
  item.pieces = std::move(left);
}

void Device::SyncAll() {
  for (const NameChange& change : nameChanges_) Take(change, items_);
  nameChanges_.clear();
  for (Node node = 0; node < items_.size(); ++node) SyncFile(node, false);
}

void Device::Take(const NameChange& change, std::vector<Item>& items) {
  for (const NewName& name : change.names) {
    if (name.node) {
      items[name.folder].names[name.name] = *name.node;
    } else {
      items[name.folder].names.erase(name.name);
    }
  }
}

void Device::Take(const Piece& piece, Item& item) {
  item.content.times.reset();
  if (piece.kind == CHANGE_WROTE) {
    Put(item.content.bytes, static_cast<std::size_t>(piece.offset), piece.bytes);
  } else if (piece.kind == CHANGE_CUT) {
    item.content.bytes.resize(static_cast<std::size_t>(piece.offset), '\0');
  } else {
    item.content.mode = piece.mode;
  }
}

void Device::TakeTorn(const Piece& piece, Item& item, std::mt19937_64& draw) {
  if (piece.kind != CHANGE_WROTE) return;
  const auto begin = static_cast<std::size_t>(piece.offset);
  for (std::size_t from = 0; from < piece.bytes.size();) {
    const std::size_t size = std::min(kSector - (begin + from) % kSector, piece.bytes.size() - from);
    if (Drawn(50, draw)) {
      item.content.times.reset();
      Put(item.content.bytes, begin + from, std::string_view(piece.bytes).substr(from, size));
    }
    from += size;
  }
}

Tree Device::AfterCut(unsigned seed) const {
  if (seed == 0) return TreeOf(items_);
  std::mt19937_64 draw(seed * 1'000'003ULL + applied_);
  std::vector<Item> items = items_;
  for (Item& item : items) {
    const int chance = seed == kNamesAlone ? 0 : seed == kBytesAlone ? 100 : DrawChance(draw);
    for (const Piece& piece : item.pieces) {
      if (Drawn(chance, draw)) {
        Take(piece, item);
      } else if (Drawn(chance, draw)) {
        TakeTorn(piece, item, draw);
      }
    }
  }
  std::map<Node, int> chances;
  NameChanges lost;
  for (const NameChange& change : nameChanges_) {
    const Node folder = change.names.back().folder;
    if (!chances.contains(folder)) {
      chances[folder] = seed == kNamesAlone ? 100 : seed == kBytesAlone ? 0 : DrawChance(draw);
    }
    const bool baseless = std::any_of(lost.begin(), lost.end(),
                                      [&](const NameChange& other) { return MeetOnAName(other, change); });
    if (baseless || !Drawn(chances[folder], draw)) {
      lost.push_back(change);
    } else {
      Take(change, items);
    }
  }
  return TreeOf(items);
}

Tree Device::AfterSync() const {
  Device synced = *this;
  synced.SyncAll();
  return TreeOf(synced.items_);
}

Tree Device::TreeOf(const std::vector<Item>& items) {
  Tree tree;
  const std::function<void(Node, const std::string&)> add = [&](Node node, const std::string& path) {
    tree[path] = items[node].content;
    for (const auto& [name, entry] : items[node].names) add(entry, path.empty() ? name : path + "/" + name);
  };
  add(0, "");
  return tree;
}

}  // namespace orvane_test
