#pragma once

#include <cstdint>
#include <string>

/// Text that crosses the boundary.
class AAX_IString {
 public:
  virtual ~AAX_IString() = default;
  virtual const char* Get() const = 0;
  virtual void Set(const char* text) = 0;
  virtual std::uint32_t Length() const = 0;
};

class AAX_CString final : public AAX_IString {
 public:
  AAX_CString() = default;
  explicit AAX_CString(const char* initial) : text(initial) {}
  const char* Get() const override { return text.c_str(); }
  void Set(const char* newText) override { text = newText; }
  std::uint32_t Length() const override { return static_cast<std::uint32_t>(text.size()); }

 private:
  std::string text;
};
