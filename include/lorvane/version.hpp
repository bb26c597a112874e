#pragma once

// Lorvane's version. The build reads it from here, so this is the one place to change it.

#define LORVANE_VERSION_MAJOR 0
#define LORVANE_VERSION_MINOR 1
#define LORVANE_VERSION_PATCH 0

#define LORVANE_VERSION_TEXT_(number) #number
#define LORVANE_VERSION_TEXT(number) LORVANE_VERSION_TEXT_(number)
// "0.1.0"
#define LORVANE_VERSION_STRING                \
  LORVANE_VERSION_TEXT(LORVANE_VERSION_MAJOR) \
  "." LORVANE_VERSION_TEXT(LORVANE_VERSION_MINOR) "." LORVANE_VERSION_TEXT(LORVANE_VERSION_PATCH)
