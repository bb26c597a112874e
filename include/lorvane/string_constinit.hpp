#pragma once

#include <string>

// LORVANE_STRING_CONSTINIT marks a constant that holds a std::string (TagKey::empty and its
// kind) as initialised at compile time, where the compiler can make such a string there.
//
// GCC makes libstdc++'s empty std::string in a constant expression. Clang 14 cannot with
// libstdc++ 12: that library starts the string's inline buffer by assigning to an array member
// of a union that has no active member yet, which Clang rejects in constant evaluation. Later
// pairs of the two are not known to agree, so every Clang build on libstdc++ leaves these
// constants to dynamic initialisation. That is still safe to use from other static
// initialisers: each constant is an inline variable defined in the header that declares it, so
// it is initialised before any variable defined after that header in the same translation
// unit, and making an empty string allocates nothing.
#if defined(__clang__) && defined(__GLIBCXX__)
#define LORVANE_STRING_CONSTINIT
#else
#define LORVANE_STRING_CONSTINIT constinit
#endif
