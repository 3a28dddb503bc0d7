#ifndef HOST_EXPORT_H
#define HOST_EXPORT_H

/// Marks a host contract whose virtual table and type information must be one and the same in the
/// module, in the host and in every other library of the process, whatever visibility each of them
/// is built with.
#define HOST_API __attribute__((visibility("default")))

#endif
