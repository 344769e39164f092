#include "platform/aaxhost/Library.h"

#include <dlfcn.h>

#include "platform/aaxhost/Registration.h"

namespace corvane::aaxhost {

namespace {

namespace fs = std::filesystem;

/// The library inside a bundle folder, or the file itself.
fs::path libraryFile(const fs::path& given) {
  std::error_code ignored;
  fs::path path =
      fs::absolute(given, ignored);  // a bare name would be looked up among the system's libraries
  if (path.has_relative_path() && !path.has_filename()) path = path.parent_path();
  if (!fs::exists(path, ignored)) throw HostError("no such file");
  const bool bundle = fs::is_directory(path, ignored);
  if (bundle) path = path / "Contents" / "x64" / path.filename();
  if (!fs::is_regular_file(path, ignored))
    throw HostError(bundle ? "no file Contents/x64/" + path.filename().string() + " in the bundle"
                           : "not a file");
  return path;
}

using Start = AAX_Result (*)();
using Init = bool (*)();

}  // namespace

std::shared_ptr<Library> Library::load(const fs::path& path) try {
  std::shared_ptr<Library> library(new Library);
  library->where = libraryFile(path);
  library->handle = dlopen(library->where.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!library->handle) {
    const char* why = dlerror();
    throw HostError(std::string("cannot be loaded: ") + (why ? why : "unknown reason"));
  }
  library->findEntryPoints();
  library->start();
  library->registerPlugin();
  return library;
} catch (const HostError& error) {
  throw HostError("library \"" + path.string() + "\": " + error.what());
}

void* Library::entryPoint(const char* name) const { return dlsym(handle, name); }

void Library::findEntryPoints() {
  for (const char* name : {"ACFRegisterPlugin", "ACFCanUnloadNow"})
    if (!entryPoint(name)) throw HostError(std::string("not a plug-in: no entry point ") + name);
  registerIt = reinterpret_cast<AAX_RegisterPlugin>(entryPoint("ACFRegisterPlugin"));
  canUnload = reinterpret_cast<AAX_CanUnloadNow>(entryPoint("ACFCanUnloadNow"));
}

void Library::start() {
  if (const auto init = reinterpret_cast<Init>(entryPoint("InitDll")); init && !init())
    throw HostError("InitDll refused");
  started = true;
  if (const auto version = reinterpret_cast<Start>(entryPoint("ACFGetSDKVersion"));
      version && version() != AAX_SDKVersion)
    throw HostError("built for version " + std::to_string(version()) + " of the contract, this host has " +
                    std::to_string(AAX_SDKVersion));
  if (const auto startup = reinterpret_cast<Start>(entryPoint("ACFStartup"))) {
    const AAX_Result result = startup();
    if (result != AAX_SUCCESS) throw HostError("ACFStartup failed with " + std::to_string(result));
  }
}

void Library::registerPlugin() {
  Registration registration;
  const AAX_Result result = registerIt(&registration);
  if (result != AAX_SUCCESS) {
    const std::string& why = registration.complaint();
    throw HostError("registration failed with " + std::to_string(result) + (why.empty() ? "" : ": " + why));
  }
  told = registration.finish();
  if (!registration.complaint().empty()) throw HostError("cannot be hosted: " + registration.complaint());
}

Library::~Library() {
  if (!handle) return;
  if (canUnload && canUnload() != 0) return;  // somebody still holds its objects: their code must stay
  if (started) {
    if (const auto shutdown = reinterpret_cast<Start>(entryPoint("ACFShutdown"))) shutdown();
    if (const auto exit = reinterpret_cast<Init>(entryPoint("ExitDll"))) exit();
  }
  told = {};
  dlclose(handle);
}

}  // namespace corvane::aaxhost
