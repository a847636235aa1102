// SPDX-License-Identifier: Apache-2.0
#ifndef EASTL_STD_STRING_H
#define EASTL_STD_STRING_H

#include <EASTL/functional.h>
#include <EAStdC/EASprintf.h>
#include <assert.h>
#include <stdarg.h>
#include <stddef.h>

#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace eastl {

/// The standard allocator under a name of its own. libstdc++ comes with the members of its strings
/// compiled and lets nobody compile them anew; those of a string with another allocator are
/// compiled here, which is smaller and leaves a dozen symbols less to be found when the library is
/// loaded.
template <class T>
struct StringAllocator : std::allocator<T> {
  template <class Other>
  struct rebind {
    using other = StringAllocator<Other>;
  };
};

/// EASTL's string over the standard library's, reduced to what this project may rely on in both.
/// Nothing leads to a std::string, so that no code comes to need one.
///
/// A position beyond the end is undefined in EASTL and an exception in the standard library. Here
/// it ends a debug build, so that a test finds the call before EASTL does.
class string {
 public:
  using size_type = size_t;
  static constexpr size_type npos = static_cast<size_type>(-1);

  struct CtorSprintf {};

  string() = default;
  string(const string& other) = default;
  string(string&& other) noexcept : text_(std::move(other.text_)) { other.clear(); }
  string(const string& other, size_type position, size_type n = npos)
      : text_(other.CheckedAt(position), position, n) {}
  string(const char* text, size_type n) : text_(text, n) {}
  string(const char* text) : text_(text) {}
  string(size_type n, char c) : text_(n, c) {}
  __attribute__((format(printf, 3, 4))) string(CtorSprintf, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    append_sprintf_va_list(format, arguments);
    va_end(arguments);
  }
  ~string() = default;

  string& operator=(const string& other) = default;
  string& operator=(string&& other) noexcept {
    assign(std::move(other));
    return *this;
  }
  string& operator=(const char* text) {
    assign(text);
    return *this;
  }

  string& assign(const string& other) { return Self(text_.assign(other.text_)); }
  string& assign(string&& other) noexcept {
    string taken(std::move(other));
    swap(taken);
    return *this;
  }
  string& assign(const string& other, size_type position, size_type n = npos) {
    return Self(text_.assign(other.CheckedAt(position), position, n));
  }
  string& assign(const char* text, size_type n) { return Self(text_.assign(text, n)); }
  string& assign(const char* text) { return Self(text_.assign(text)); }
  string& assign(size_type n, char c) { return Self(text_.assign(n, c)); }

  string& append(const string& other) { return Self(text_.append(other.text_)); }
  string& append(const string& other, size_type position, size_type n = npos) {
    return Self(text_.append(other.CheckedAt(position), position, n));
  }
  string& append(const char* text, size_type n) { return Self(text_.append(text, n)); }
  string& append(const char* text) { return Self(text_.append(text)); }
  string& append(size_type n, char c) { return Self(text_.append(n, c)); }

  void push_back(char c) { text_.push_back(c); }
  string& operator+=(const string& other) { return append(other); }
  string& operator+=(const char* text) { return append(text); }
  string& operator+=(char c) { return append(1, c); }

  __attribute__((format(printf, 2, 3))) string& sprintf(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    sprintf_va_list(format, arguments);
    va_end(arguments);
    return *this;
  }
  __attribute__((format(printf, 2, 0))) string& sprintf_va_list(const char* format,
                                                                va_list arguments) {
    clear();
    return append_sprintf_va_list(format, arguments);
  }
  __attribute__((format(printf, 2, 3))) string& append_sprintf(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    append_sprintf_va_list(format, arguments);
    va_end(arguments);
    return *this;
  }
  __attribute__((format(printf, 2, 0))) string& append_sprintf_va_list(const char* format,
                                                                       va_list arguments) {
    va_list second_pass;
    va_copy(second_pass, arguments);
    const int length = EA::StdC::Vsnprintf(nullptr, 0, format, arguments);
    if (length > 0) {
      const size_type old_size = size();
      const size_type added = static_cast<size_type>(length);
      resize(old_size + added);
      EA::StdC::Vsnprintf(data() + old_size, added + 1, format, second_pass);
    }
    va_end(second_pass);
    return *this;
  }

  size_type find(const string& other, size_type position = 0) const noexcept {
    return text_.find(other.text_, position);
  }
  size_type find(const char* text, size_type position = 0) const {
    return text_.find(text, position);
  }
  size_type find(const char* text, size_type position, size_type n) const {
    return text_.find(text, position, n);
  }
  size_type find(char c, size_type position = 0) const noexcept { return text_.find(c, position); }

  size_type rfind(const string& other, size_type position = npos) const noexcept {
    return text_.rfind(other.text_, position);
  }
  size_type rfind(const char* text, size_type position = npos) const {
    return text_.rfind(text, position);
  }
  size_type rfind(const char* text, size_type position, size_type n) const {
    return text_.rfind(text, position, n);
  }
  size_type rfind(char c, size_type position = npos) const noexcept {
    return text_.rfind(c, position);
  }

  size_type find_first_of(const string& set, size_type position = 0) const noexcept {
    return text_.find_first_of(set.text_, position);
  }
  size_type find_first_of(const char* set, size_type position = 0) const {
    return text_.find_first_of(set, position);
  }
  size_type find_first_of(const char* set, size_type position, size_type n) const {
    return text_.find_first_of(set, position, n);
  }
  size_type find_first_of(char c, size_type position = 0) const noexcept {
    return text_.find_first_of(c, position);
  }

  string substr(size_type position = 0, size_type n = npos) const {
    return string(*this, position, n);
  }

  int compare(const string& other) const noexcept { return text_.compare(other.text_); }
  int compare(size_type position, size_type n, const string& other) const {
    return CheckedAt(position).compare(position, n, other.text_);
  }
  int compare(const char* text) const { return text_.compare(text); }
  int compare(size_type position, size_type n, const char* text) const {
    return CheckedAt(position).compare(position, n, text);
  }

  void resize(size_type n) { text_.resize(n); }
  void resize(size_type n, char c) { text_.resize(n, c); }
  void reserve(size_type n) { text_.reserve(n); }
  void clear() noexcept { text_.clear(); }
  bool empty() const noexcept { return text_.empty(); }
  size_type size() const noexcept { return text_.size(); }
  char* data() noexcept { return text_.data(); }
  const char* data() const noexcept { return text_.data(); }
  const char* c_str() const noexcept { return text_.c_str(); }
  void swap(string& other) noexcept { text_.swap(other.text_); }

  friend bool operator==(const string& a, const string& b) noexcept { return a.text_ == b.text_; }
  friend bool operator==(const string& a, const char* b) { return a.text_ == b; }
  friend bool operator==(const char* a, const string& b) { return a == b.text_; }

  friend string operator+(string a, const string& b) { return std::move(a.append(b)); }
  friend string operator+(string a, const char* b) { return std::move(a.append(b)); }
  friend string operator+(string a, char b) { return std::move(a.append(1, b)); }
  friend string operator+(const char* a, const string& b) { return string(a) + b; }
  friend string operator+(char a, const string& b) { return string(1, a) + b; }

 private:
  friend struct hash<string>;

  using Text = std::basic_string<char, std::char_traits<char>, StringAllocator<char>>;

  /// What every change returns, in place of the string that the change itself gives.
  string& Self(const Text&) { return *this; }

  /// The whole text, of which `position` has to be a place or the end.
  const Text& CheckedAt([[maybe_unused]] size_type position) const {
    assert(position <= size());
    return text_;
  }

  Text text_;
};

template <>
struct hash<string> {
  size_t operator()(const string& text) const noexcept {
    return std::hash<std::string_view>()(text.text_);
  }
};

}  // namespace eastl

#endif  // EASTL_STD_STRING_H
