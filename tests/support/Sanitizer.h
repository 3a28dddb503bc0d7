#ifndef TESTS_SUPPORT_SANITIZER_H
#define TESTS_SUPPORT_SANITIZER_H

#if defined(__SANITIZE_ADDRESS__)
#define BUILT_WITH_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define BUILT_WITH_ADDRESS_SANITIZER 1
#endif
#endif
#ifndef BUILT_WITH_ADDRESS_SANITIZER
#define BUILT_WITH_ADDRESS_SANITIZER 0
#endif

#if defined(__SANITIZE_THREAD__)
#define BUILT_WITH_THREAD_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define BUILT_WITH_THREAD_SANITIZER 1
#endif
#endif
#ifndef BUILT_WITH_THREAD_SANITIZER
#define BUILT_WITH_THREAD_SANITIZER 0
#endif

// The sanitizers that go with it open pipes to look at memory, and take a refusal for a wrong type.
#define SKIP_WHERE_SANITIZERS_NEED_DESCRIPTORS()                                                   \
    if (BUILT_WITH_ADDRESS_SANITIZER)                                                              \
    GTEST_SKIP() << "the sanitizers need descriptors of their own"

// They write on their own account, and what is meant for the program's calls meets theirs.
#define SKIP_WHERE_SANITIZERS_WRITE()                                                              \
    if (BUILT_WITH_ADDRESS_SANITIZER || BUILT_WITH_THREAD_SANITIZER)                               \
    GTEST_SKIP() << "the sanitizers write, too"

// Nothing may be loaded in front of them.
#define SKIP_WHERE_SANITIZERS_COME_FIRST()                                                         \
    if (BUILT_WITH_ADDRESS_SANITIZER || BUILT_WITH_THREAD_SANITIZER)                               \
    GTEST_SKIP() << "the sanitizers come first"

// They reserve terabytes of address space.
#define SKIP_WHERE_SANITIZERS_NEED_ADDRESSES()                                                     \
    if (BUILT_WITH_ADDRESS_SANITIZER || BUILT_WITH_THREAD_SANITIZER)                               \
    GTEST_SKIP() << "the sanitizers need addresses of their own"

#endif
