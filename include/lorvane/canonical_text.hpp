#pragma once

#include <compare>
#include <cstddef>
#include <string>
#include <string_view>

namespace lorvane {

// Texts of the tag model (names, keys, choices) compare the way a user reads them: two texts
// are equal when they are canonically equivalent (an "é" typed as one code point or as "e" and
// a combining accent), and they are ordered by code points after normalisation to NFC, with no
// locale and no case folding. Every catalogue name is plain ASCII, which is its own normal
// form, so those are compared byte by byte without touching ICU.
//
// Bytes that are no valid UTF-8 have no normal form: such a text stands for itself.

// The text in NFC; unchanged when it is ASCII, already in NFC or not valid UTF-8.
std::string canonicalForm(std::string_view text);

bool canonicallyEqual(std::string_view a, std::string_view b);

// Code point order of the canonical forms (for UTF-8 the same as their byte order).
std::strong_ordering canonicalCompare(std::string_view a, std::string_view b);

// The hash of the canonical form, so it agrees with canonicallyEqual; for ASCII it is exactly
// std::hash<std::string_view> of the text.
std::size_t canonicalHash(std::string_view text);

}  // namespace lorvane
