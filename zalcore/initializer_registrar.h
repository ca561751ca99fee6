// The host framework's ordered start-up and shutdown. Components register initializers (usually
// from a static registrar object, at module load) with a name, the contexts they run in, an init
// and a terminate function, and the names of the initializers they depend on. The host then
// initialises every registered initializer of its context after its dependencies, and terminates
// them in the reverse order.
#pragma once

#include <array>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

namespace zalcore::config {

using InitFunction = bool (*)();
using TerminateFunction = void (*)();

inline constexpr std::size_t kMaxInitializerDependencies = 16;
// Dependency names; unused slots are null (or empty strings).
using InitializerDependencies = std::array<const char*, kMaxInitializerDependencies>;

// Context flags are a bit mask of the host's contexts; an initializer runs when its flags share a
// bit with the context being started.
inline constexpr std::uint32_t kAllContexts = 0xFFFFFFFF;

struct Initializer {
  std::string name;
  std::uint32_t contextFlags;
  InitFunction init;            // may be null: nothing to do
  TerminateFunction terminate;  // may be null
  InitializerDependencies dependencies;
};

struct StartupOutcome {
  std::vector<std::string> initialized;  // in the order their init functions ran
  // One line per initializer that did not run or failed: "<name>: <reason>".
  std::vector<std::string> problems;
};

class InitializerRegistry {
 public:
  // The process's registry, which InitializerRegistrar objects register with. Never destroyed.
  static InitializerRegistry& Global();

  void Add(Initializer initializer);
  // Removes every registration under `name` that is not initialised (an initialised one stays
  // until TerminateAll has terminated it).
  void Remove(const std::string& name);

  // Runs the init function of each registered initializer of `context` that is not initialised
  // yet, every one after all of its dependencies, ties in registration order. An initializer does
  // not run, and is reported, when a dependency is not registered for this context, when a
  // dependency failed or did not run, when it is part of a dependency cycle, or when its name was
  // registered before. An init function that returns false is reported as failed. Init functions
  // run on the calling thread without the registry's lock held.
  StartupOutcome InitializeAll(std::uint32_t context);

  // Terminates every initialised initializer, in the reverse order of initialisation. Calling it
  // again, or before InitializeAll, does nothing.
  void TerminateAll();

 private:
  struct Entry {
    Initializer initializer;
    bool initialized = false;
  };
  std::mutex mutex_;
  struct Started {
    std::string name;
    TerminateFunction terminate;
  };
  std::vector<Entry> entries_;
  std::vector<Started> started_;
};

// Registers with the global registry for the life of the object.
class InitializerRegistrar {
 public:
  InitializerRegistrar(const char* name, std::uint32_t contextFlags, InitFunction init,
                       TerminateFunction terminate, const InitializerDependencies& dependencies);
  ~InitializerRegistrar();

  InitializerRegistrar(const InitializerRegistrar&) = delete;
  InitializerRegistrar& operator=(const InitializerRegistrar&) = delete;

 private:
  std::string name_;
};

}  // namespace zalcore::config
