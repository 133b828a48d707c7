// Marks what libsvmscore_host.so offers to other libraries.
#ifndef HOST_TEXT_API_H_
#define HOST_TEXT_API_H_

#define SVMSCORE_HOST_API __attribute__((visibility("default")))

#endif  // HOST_TEXT_API_H_
