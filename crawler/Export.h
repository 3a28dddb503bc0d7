#ifndef CRAWLER_EXPORT_H
#define CRAWLER_EXPORT_H

/// CRAWLER_API marks what the shared library exports; CRAWLER_LOCAL takes a nested class out of
/// the visibility that it inherits from an exported one.
#define CRAWLER_API __attribute__((visibility("default")))
#define CRAWLER_LOCAL __attribute__((visibility("hidden")))

#endif
