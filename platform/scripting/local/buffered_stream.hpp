// What all text files have in common: the code page, the mode, and a buffer for what is written.
#pragma once

#include <memory>
#include <string>

#include "platform/automation/locale.hpp"
#include "platform/scripting/file_system_object.hpp"

namespace Scripting::local {

using LocalePtr = std::shared_ptr<const automation::Locale>;

// The current runtime's locale, to be asked for before a file is made or emptied: 91 without one.
LocalePtr RequiredLocale();

class BufferedStream : public TextStream {
 public:
  BufferedStream(IOMode mode, LocalePtr locale) : mode_(mode), locale_(std::move(locale)) {}

  void Write(std::string_view text) override;
  void WriteLine(std::string_view text) override;
  std::string ReadAll() override;
  void Close() override;

 protected:
  bool IsOpen() const { return isOpen_; }
  // What follows is refused as with a closed file.
  void End() { isOpen_ = false; }
  // Hands over what is in the buffer, which is empty afterwards either way. 0 or an errno value.
  int WriteOut();

  // 0 or an errno value.
  virtual int WriteBytes(std::string_view bytes) = 0;
  // The rest of a file that is open for reading; raises.
  virtual std::string ReadBytes() { return {}; }
  // Closes the file once everything was handed over, or could not be (`complete` is false); raises.
  virtual void CloseFile(bool complete) = 0;

 private:
  void RequireMode(bool isRight) const;

  const IOMode mode_;
  const LocalePtr locale_;
  std::string buffer_;
  bool isOpen_ = true;
};

}  // namespace Scripting::local
