#include "zalcore/initializer_registrar.h"

#include <map>
#include <utility>

namespace zalcore::config {
namespace {

enum class Progress { kPending, kDone, kFailed, kBlocked };

bool IsName(const char* dependency) {
  return dependency != nullptr && dependency[0] != '\0';
}

}  // namespace

InitializerRegistry& InitializerRegistry::Global() {
  static InitializerRegistry* const registry = new InitializerRegistry;
  return *registry;
}

void InitializerRegistry::Add(Initializer initializer) {
  const std::lock_guard lock(mutex_);
  entries_.push_back({std::move(initializer)});
}

void InitializerRegistry::Remove(const std::string& name) {
  const std::lock_guard lock(mutex_);
  std::erase_if(entries_,
                [&](const Entry& e) { return !e.initialized && e.initializer.name == name; });
}

StartupOutcome InitializerRegistry::InitializeAll(std::uint32_t context) {
  std::vector<Entry> candidates;
  {
    const std::lock_guard lock(mutex_);
    for (const Entry& entry : entries_) {
      if (entry.initializer.contextFlags & context) candidates.push_back(entry);
    }
  }

  StartupOutcome outcome;
  std::vector<Progress> progress(candidates.size(), Progress::kPending);
  std::map<std::string, std::size_t> by_name;
  for (std::size_t i = 0; i < candidates.size(); ++i) {
    const std::string& name = candidates[i].initializer.name;
    if (candidates[i].initialized) progress[i] = Progress::kDone;
    if (!by_name.emplace(name, i).second) {
      progress[i] = Progress::kBlocked;
      outcome.problems.push_back(name + ": registered more than once");
    }
  }

  // Passes in registration order until nothing changes; whatever is still pending then waits on
  // a cycle.
  for (bool changed = true; changed;) {
    changed = false;
    for (std::size_t i = 0; i < candidates.size(); ++i) {
      if (progress[i] != Progress::kPending) continue;
      const Initializer& initializer = candidates[i].initializer;
      bool ready = true;
      for (const char* dependency : initializer.dependencies) {
        if (!IsName(dependency)) continue;
        const auto found = by_name.find(dependency);
        if (found == by_name.end()) {
          outcome.problems.push_back(initializer.name + ": missing dependency " + dependency);
          progress[i] = Progress::kBlocked;
          break;
        }
        const Progress needed = progress[found->second];
        if (needed == Progress::kFailed || needed == Progress::kBlocked) {
          outcome.problems.push_back(initializer.name + ": dependency " + dependency +
                                     " did not start");
          progress[i] = Progress::kBlocked;
          break;
        }
        if (needed == Progress::kPending) ready = false;
      }
      if (progress[i] == Progress::kBlocked) {
        changed = true;
        continue;
      }
      if (!ready) continue;
      changed = true;
      if (initializer.init && !initializer.init()) {
        progress[i] = Progress::kFailed;
        outcome.problems.push_back(initializer.name + ": init failed");
        continue;
      }
      progress[i] = Progress::kDone;
      outcome.initialized.push_back(initializer.name);
      const std::lock_guard lock(mutex_);
      for (Entry& entry : entries_) {
        if (!entry.initialized && entry.initializer.name == initializer.name) {
          entry.initialized = true;
          break;
        }
      }
      started_.push_back({initializer.name, initializer.terminate});
    }
  }
  for (std::size_t i = 0; i < candidates.size(); ++i) {
    if (progress[i] == Progress::kPending) {
      outcome.problems.push_back(candidates[i].initializer.name + ": dependency cycle");
    }
  }
  return outcome;
}

void InitializerRegistry::TerminateAll() {
  std::vector<Started> started;
  {
    const std::lock_guard lock(mutex_);
    started.swap(started_);
    for (Entry& entry : entries_) entry.initialized = false;
  }
  for (auto it = started.rbegin(); it != started.rend(); ++it) {
    if (it->terminate) it->terminate();
  }
}

InitializerRegistrar::InitializerRegistrar(const char* name, std::uint32_t contextFlags,
                                           InitFunction init, TerminateFunction terminate,
                                           const InitializerDependencies& dependencies)
    : name_(name) {
  InitializerRegistry::Global().Add({name_, contextFlags, init, terminate, dependencies});
}

InitializerRegistrar::~InitializerRegistrar() {
  InitializerRegistry::Global().Remove(name_);
}

}  // namespace zalcore::config
