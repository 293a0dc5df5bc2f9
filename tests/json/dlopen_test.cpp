// The library as a plugin: loaded with dlopen into a process that did not link it, its tree
// works on the loading thread and on another one.
#include <dlfcn.h>
#include <elf.h>
#include <link.h>

#include <thread>

#include <gtest/gtest.h>

#include <zrad/json.h>

namespace {

TEST(LateLoad, TreeWorksAfterDlopen) {
  void* library = dlopen(ZRAD_LIBRARY, RTLD_NOW | RTLD_LOCAL);
  ASSERT_TRUE(library) << dlerror();
  // Static TLS would have to fit the space glibc keeps for late loads, which it may not.
  link_map* map = nullptr;
  ASSERT_EQ(dlinfo(library, RTLD_DI_LINKMAP, &map), 0);
  for (const ElfW(Dyn)* d = map->l_ld; d->d_tag != DT_NULL; ++d) {
    if (d->d_tag == DT_FLAGS) EXPECT_EQ(d->d_un.d_val & DF_STATIC_TLS, 0u) << "the library asks for static TLS";
  }

  // ZrJson::readjson; everything else through the elements' virtual operations.
  using ReadJson = ZrJsonPtr (*)(const ZrUtf8String&);
  auto readjson = reinterpret_cast<ReadJson>(dlsym(library, "_ZN6ZrJson8readjsonERK12ZrUtf8String"));
  ASSERT_TRUE(readjson) << dlerror();
  ZrJsonPtr tree = readjson(R"({"a":[1,2,3],"b":"text"})");
  ASSERT_TRUE(tree);
  EXPECT_EQ(tree->property_sub("a")->array_count(), 3);
  std::thread other([&] {
    // Elements made and dropped on a second thread use its own pool cache.
    for (int i = 0; i < 1000; ++i) {
      ZrJsonPtr copy = tree->clone();
      copy->set_propertyi("n", i, false);
      EXPECT_EQ(copy->property_sub("n")->longlongValue(), i);
    }
  });
  other.join();
  EXPECT_EQ(tree->property_sub("b")->strValue().str(), "text");
}

}  // namespace
