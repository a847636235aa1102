// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_RELAY_LOG_H
#define KESTREL_RELAY_LOG_H

#include <string>
#include <string_view>

namespace kestrel::relay {

/// Lines on standard error, without control characters. Where that leads to the journal, each
/// begins with its priority as the journal reads it; a person sees the name of the program instead.
class Log {
 public:
  explicit Log(bool verbose);

  bool verbose() const { return verbose_; }

  void Error(const std::string& text) const { Write(3, text); }
  void Warning(const std::string& text) const { Write(4, text); }
  void Info(const std::string& text) const { Write(6, text); }
  /// Lines for whoever asked for many.
  void Debug(const std::string& text) const {
    if (verbose_) {
      Write(7, text);
    }
  }

 private:
  void Write(int priority, const std::string& text) const;

  bool verbose_;
  bool to_journal_;
};

/// What may be told of a command: its name, and nothing of its arguments, among which passphrases
/// are. A name that no command has may be part of one as well.
std::string NameOf(std::string_view command);

}  // namespace kestrel::relay

#endif  // KESTREL_RELAY_LOG_H
