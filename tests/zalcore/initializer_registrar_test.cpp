#include <zalcore/initializer_registrar.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

using zalcore::config::InitializerDependencies;
using zalcore::config::InitializerRegistry;

// Init and terminate functions are plain function pointers: they log into one journal.
std::vector<std::string> g_journal;

template <char kName>
bool Init() {
  g_journal.push_back(std::string("init ") + kName);
  return true;
}
template <char kName>
void Terminate() {
  g_journal.push_back(std::string("terminate ") + kName);
}
bool FailingInit() {
  g_journal.push_back("init failing");
  return false;
}

struct Spec {
  const char* name;
  std::uint32_t context;
  bool (*init)();
  void (*terminate)();
  InitializerDependencies dependencies;
};

struct Case {
  const char* what;
  std::vector<Spec> registered;
  std::uint32_t context;
  std::vector<std::string> initialized;
  std::vector<std::string> problems;
};

TEST(InitializerRegistry, InitialisesInDependencyOrderAndReportsWhatCannotStart) {
  const Case cases[] = {
      {"registration order when independent",
       {{"a", 1, Init<'a'>, Terminate<'a'>, {}}, {"b", 1, Init<'b'>, Terminate<'b'>, {}}},
       1,
       {"a", "b"},
       {}},
      {"dependencies first, whatever the registration order",
       {{"c", 1, Init<'c'>, Terminate<'c'>, {"b"}},
        {"b", 1, Init<'b'>, Terminate<'b'>, {"a", nullptr, ""}},
        {"a", 1, Init<'a'>, Terminate<'a'>, {}}},
       1,
       {"a", "b", "c"},
       {}},
      {"a missing dependency stops its dependents too",
       {{"a", 1, Init<'a'>, Terminate<'a'>, {"nowhere"}},
        {"b", 1, Init<'b'>, Terminate<'b'>, {"a"}},
        {"c", 1, Init<'c'>, Terminate<'c'>, {}}},
       1,
       {"c"},
       {"a: missing dependency nowhere", "b: dependency a did not start"}},
      {"a cycle is reported, not waited on",
       {{"a", 1, Init<'a'>, Terminate<'a'>, {"b"}},
        {"b", 1, Init<'b'>, Terminate<'b'>, {"a"}},
        {"c", 1, Init<'c'>, Terminate<'c'>, {}},
        {"d", 1, Init<'d'>, Terminate<'d'>, {"d"}}},
       1,
       {"c"},
       {"a: dependency cycle", "b: dependency cycle", "d: dependency cycle"}},
      {"a failed init stops its dependents",
       {{"f", 1, FailingInit, Terminate<'f'>, {}}, {"b", 1, Init<'b'>, Terminate<'b'>, {"f"}}},
       1,
       {},
       {"f: init failed", "b: dependency f did not start"}},
      {"only the context's initializers; others count as missing",
       {{"a", 4, Init<'a'>, Terminate<'a'>, {}},
        {"b", 2, Init<'b'>, Terminate<'b'>, {}},
        {"c", 4, Init<'c'>, Terminate<'c'>, {"b"}}},
       4 | 1,
       {"a"},
       {"c: missing dependency b"}},
      {"a name registered twice runs once",
       {{"a", 1, Init<'a'>, Terminate<'a'>, {}}, {"a", 1, Init<'b'>, Terminate<'b'>, {}}},
       1,
       {"a"},
       {"a: registered more than once"}},
      {"null functions are allowed",
       {{"a", 1, nullptr, nullptr, {}}, {"b", 1, Init<'b'>, Terminate<'b'>, {"a"}}},
       1,
       {"a", "b"},
       {}},
  };
  for (const Case& c : cases) {
    InitializerRegistry registry;
    for (const Spec& spec : c.registered) {
      registry.Add({spec.name, spec.context, spec.init, spec.terminate, spec.dependencies});
    }
    g_journal.clear();
    const auto outcome = registry.InitializeAll(c.context);
    EXPECT_EQ(outcome.initialized, c.initialized) << c.what;
    EXPECT_EQ(outcome.problems, c.problems) << c.what;

    // Terminate runs for exactly the initialised ones, in reverse order, once.
    std::vector<std::string> expected_terminations;
    for (auto it = outcome.initialized.rbegin(); it != outcome.initialized.rend(); ++it) {
      for (const Spec& spec : c.registered) {
        if (*it == spec.name && spec.terminate) {
          g_journal.clear();
          spec.terminate();
          expected_terminations.push_back(g_journal.front());
          break;
        }
      }
    }
    g_journal.clear();
    registry.TerminateAll();
    registry.TerminateAll();
    EXPECT_EQ(g_journal, expected_terminations) << c.what;
  }
}

TEST(InitializerRegistry, SecondStartRunsOnlyWhatIsNewAndRestartWorksAfterTerminate) {
  InitializerRegistry registry;
  registry.Add({"a", 1, Init<'a'>, Terminate<'a'>, {}});
  g_journal.clear();
  registry.InitializeAll(1);
  registry.Add({"b", 1, Init<'b'>, Terminate<'b'>, {"a"}});
  EXPECT_EQ(registry.InitializeAll(1).initialized, std::vector<std::string>{"b"});
  registry.TerminateAll();
  EXPECT_EQ(registry.InitializeAll(1).initialized, (std::vector<std::string>{"a", "b"}));
  registry.TerminateAll();
  EXPECT_EQ(g_journal,
            (std::vector<std::string>{"init a", "init b", "terminate b", "terminate a", "init a",
                                      "init b", "terminate b", "terminate a"}));
}

TEST(InitializerRegistrar, RegistersForItsLifetime) {
  InitializerRegistry& global = InitializerRegistry::Global();
  {
    const zalcore::config::InitializerRegistrar registrar("registrar-test", 0x100, Init<'r'>,
                                                          Terminate<'r'>, {});
    g_journal.clear();
    // The global registry also holds the library's own initializers of every context.
    EXPECT_TRUE(std::ranges::count(global.InitializeAll(0x100).initialized, "registrar-test"));
    global.TerminateAll();
    EXPECT_EQ(g_journal, (std::vector<std::string>{"init r", "terminate r"}));
  }
  EXPECT_FALSE(std::ranges::count(global.InitializeAll(0x100).initialized, "registrar-test"));
  global.TerminateAll();
}

}  // namespace
