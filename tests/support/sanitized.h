#pragma once

// g++ and clang++ tell in different ways that a sanitizer is built in.
#ifndef __has_feature
#define __has_feature(name) 0
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || \
    __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define TOPLIST_SANITIZED
#endif
