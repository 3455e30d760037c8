// Prints the version of the headers as text and as numbers.
#include <pistonfield/version.h>

#include <cstdio>

int main() {
  std::printf("%s %d.%d.%d\n", PISTONFIELD_VERSION, PISTONFIELD_VERSION_MAJOR,
              PISTONFIELD_VERSION_MINOR, PISTONFIELD_VERSION_PATCH);
}
