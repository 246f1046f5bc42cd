#pragma once

// The version of these headers; the build takes it from here too. Programs
// built against one minor version run with every later one of the same major.
#define TARVIX_VERSION_MAJOR 2
#define TARVIX_VERSION_MINOR 4
#define TARVIX_VERSION_PATCH 0
#define TARVIX_VERSION "2.4.0"
