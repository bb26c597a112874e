// Prints files in the order they were taken, with the place where each was taken.
//   lorvane-example-sort-by-capture-time FILE...
#include <lorvane/lorvane.hpp>

#include <algorithm>
#include <iostream>

int main(int argc, char** argv) {
  using namespace lorvane;

  struct Shot {
    std::string file;
    std::optional<CaptureTime> taken;
    std::optional<GeoLocation> place;
  };
  std::vector<Shot> shots;
  const std::vector<std::string> files(argv + 1, argv + argc);
  MetadataReader reader;
  reader.readEach(files, [&](FileTags&& file) {
    shots.push_back({file.file, file.captureTime(), file.location()});
  });

  // By the instant where the zone is known, else by the local time as if it were UTC; those
  // without a time of day last.
  const auto instant = [](const Shot& shot) {
    std::optional<std::chrono::sys_time<std::chrono::microseconds>> result;
    if (shot.taken) {
      TagDateTime time = shot.taken->time;
      time.offsetMinutes = time.offsetMinutes.value_or(0);
      result = time.utc();
    }
    return std::pair(!result, result);
  };
  std::stable_sort(shots.begin(), shots.end(),
                   [&](const Shot& a, const Shot& b) { return instant(a) < instant(b); });

  for (const Shot& shot : shots) {
    std::cout << (shot.taken ? shot.taken->time.iso8601() : "(no date)") << "  " << shot.file;
    if (shot.place) {
      std::cout << "  at " << shot.place->latitude << ", " << shot.place->longitude;
      if (shot.place->altitude) {
        std::cout << ", " << *shot.place->altitude << " m";
      }
    }
    std::cout << "\n";
  }
}
