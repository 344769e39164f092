#pragma once

#include <dlfcn.h>

#include <cstdlib>
#include <memory>
#include <string>

#include "platform/aaxhost/AaxHost.h"
#include "tests/platform/aaxhost/fake/FakeProbe.h"

namespace corvane::aaxhost {

/// Makes the made-up plug-in misbehave while it lives.
class Fault {
 public:
  explicit Fault(const char* name) { setenv("FAKE_FAULT", name, 1); }
  ~Fault() { unsetenv("FAKE_FAULT"); }
};

/// The made-up plug-in, loaded, with the window into it.
struct FakeLibrary {
  std::shared_ptr<Library> library = Library::load(FAKE_PLUGIN);
  FakeProbe& probe = [this]() -> FakeProbe& {
    void* handle = dlopen(library->file().c_str(), RTLD_NOW | RTLD_NOLOAD);
    FakeProbe* found = reinterpret_cast<FakeProbeEntry>(dlsym(handle, "fakeProbe"))();
    dlclose(handle);  // the host's own hold stays
    found->takeLog();
    found->logging = true;
    return *found;
  }();
};

/// Whether a library file is in the process.
inline bool isLoaded(const std::filesystem::path& file) {
  void* handle = dlopen(file.c_str(), RTLD_NOW | RTLD_NOLOAD);
  if (handle) dlclose(handle);
  return handle != nullptr;
}

}  // namespace corvane::aaxhost
