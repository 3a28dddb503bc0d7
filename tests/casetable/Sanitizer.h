#ifndef TESTS_CASETABLE_SANITIZER_H
#define TESTS_CASETABLE_SANITIZER_H

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

// The sanitizers that go with it open pipes to look at memory, and take a refusal for a wrong type.
#define SKIP_WHERE_SANITIZERS_NEED_DESCRIPTORS()                                                   \
    if (BUILT_WITH_ADDRESS_SANITIZER)                                                              \
    GTEST_SKIP() << "the sanitizers need descriptors of their own"

#endif
