// A mail page as a browser would understand it.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace orvane_test {

class Page {
 public:
  explicit Page(std::string_view html);
  ~Page();
  Page(const Page&) = delete;
  Page& operator=(const Page&) = delete;

  // The texts of the elements that the XPath expression selects; a br counts as a line feed.
  std::vector<std::string> Texts(const std::string& expression) const;
  std::size_t Count(const std::string& expression) const { return Texts(expression).size(); }

  // The names of all elements and attributes in the page, sorted, each once.
  std::vector<std::string> ElementNames() const;
  std::vector<std::string> AttributeNames() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace orvane_test
