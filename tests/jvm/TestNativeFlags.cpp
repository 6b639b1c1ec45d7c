// The flags of the native methods for file security: each goes its own way, and only the canonical true counts.
#include "jvm/Jvm.h"

#include "faults/FileSecurityHooks.h"
#include "jvm/NativeMethods.h"

namespace tessel::test {
namespace {

// For everyone, of a directory, which hands its entries down.
constexpr unsigned kInherit = 3;
constexpr DWORD kRead = 0xA0000000;
constexpr DWORD kWrite = 0x401F0000;
constexpr DWORD kReadAndWrite = 0xE01F0000;

class NativeFlags : public JvmTest {
 protected:
  ~NativeFlags() override { env.DeleteLocalRef(directory_); }

  // The entry for everyone that the call hands to the system, the last one.
  AceOf handedByMkpriv(jboolean everyoneRead, jboolean everyoneWrite) {
    return handedBy([&] { native::mkpriv(env, directory_, everyoneRead, everyoneWrite); });
  }
  AceOf handedByMkGroupOmniWrite(jboolean everyoneWrite) {
    return handedBy([&] { native::mkGroupOmniWrite(env, directory_, everyoneWrite); });
  }

 private:
  template <class Call>
  AceOf handedBy(const Call& call) {
    const HandedLists handed;
    call();
    EXPECT_EQ(takeException(env), "");
    return handed.all().at(0).list.entries.back();
  }

  const jstring directory_ = env.NewStringUTF("C:\\");
};

}  // namespace

TEST_F(NativeFlags, OfMkprivTellReadingFromWriting) {
  EXPECT_EQ(handedByMkpriv(1, 0), allow(kRead, kEveryone, kInherit));
  EXPECT_EQ(handedByMkpriv(0, 1), allow(kWrite, kEveryone, kInherit));
  EXPECT_EQ(handedByMkpriv(1, 1), allow(kReadAndWrite, kEveryone, kInherit));
}

TEST_F(NativeFlags, OfMkprivCountOnlyAsTheCanonicalTrue) {
  for (const jboolean other : {jboolean{2}, jboolean{3}, jboolean{255}}) {
    EXPECT_EQ(handedByMkpriv(1, other), allow(kRead, kEveryone, kInherit));
    EXPECT_EQ(handedByMkpriv(other, 1), allow(kWrite, kEveryone, kInherit));
  }
}

TEST_F(NativeFlags, OfMkGroupOmniWriteCountOnlyAsTheCanonicalTrue) {
  const OmniAccount omni(kOmni);
  for (const jboolean other : {jboolean{0}, jboolean{2}, jboolean{3}, jboolean{255}}) {
    EXPECT_EQ(handedByMkGroupOmniWrite(other), allow(kRead, kEveryone, kInherit));
  }
  EXPECT_EQ(handedByMkGroupOmniWrite(1), allow(kReadAndWrite, kEveryone, kInherit));
}

}  // namespace tessel::test
