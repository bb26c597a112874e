// What bytes without a file and sidecars cost a reader, each against the same reading without:
//
// 1. readBytes of a 5 MB JPEG held in memory against read of the same file on disk, one kept
//    tool, warm (each side read a few times before the rounds);
// 2. reading 2,000 RAW-like files (small DNGs: TIFF with a DNG version, EXIF and maker notes,
//    as many RAW formats are), each with an XMP sidecar, with SidecarPolicy::merge against
//    ignore, two tools.
//
// Each round times both sides back to back, the side that goes first alternating between
// rounds; a ratio is taken within a round and the median of the rounds' ratios is printed, of
// wall-clock time and of processor time (this process's threads and its tools, read from /proc
// while they live), with the lowest and highest ratio as the noise.
//
//   lorvane-bench-sidecars_and_bytes [rounds (default 11)] [reads per side in 1 (default 20)]
//
// The JPEG is sample.jpg with its scan data padded with random bytes to 5 MB: ExifTool does
// not decode an image, it reads the segments and then the scan data through to the end of the
// file, so the padding costs it what a real 5 MB picture's scan data costs.

#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include <lorvane/lorvane.hpp>

#include "bench_support.hpp"

namespace {

namespace fs = std::filesystem;
using lorvane::bench::loadAverage;
using lorvane::bench::median;
using namespace lorvane;

const fs::path sourceFolder = LORVANE_SOURCE_DIR;

std::string contents(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

double timevalSeconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

// This process's processor seconds, its threads', its waited-for children's and those of the
// children still alive (the kept tools).
double processorSeconds() {
  double total = 0;
  for (const int who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
    rusage usage{};
    getrusage(who, &usage);
    total += timevalSeconds(usage.ru_utime) + timevalSeconds(usage.ru_stime);
  }
  const std::string self = std::to_string(::getpid());
  const double tick = static_cast<double>(::sysconf(_SC_CLK_TCK));
  for (const auto& entry : fs::directory_iterator("/proc")) {
    const std::string name = entry.path().filename().string();
    if (name.find_first_not_of("0123456789") != std::string::npos) {
      continue;
    }
    const std::string stat = contents(entry.path() / "stat");
    const auto close = stat.rfind(')');
    if (close == std::string::npos) {
      continue;
    }
    // After the name: state ppid ... utime (14th field) stime (15th).
    std::vector<std::string> fields;
    std::string field;
    for (const char c : stat.substr(close + 2)) {
      if (c == ' ') {
        fields.push_back(field);
        field.clear();
      } else {
        field += c;
      }
    }
    if (fields.size() > 12 && fields[1] == self) {
      total += (std::stod(fields[11]) + std::stod(fields[12])) / tick;
    }
  }
  return total;
}

struct Cost {
  double wall = 0;
  double processor = 0;
};

Cost costOf(const std::function<void()>& work) {
  const double processorBefore = processorSeconds();
  const auto start = std::chrono::steady_clock::now();
  work();
  return {std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(),
          processorSeconds() - processorBefore};
}

// Rounds of `plain` and `other`, the first side alternating; prints the medians and the ratios.
void compare(const char* title, int rounds, const std::function<void()>& plain,
             const std::function<void()>& other) {
  std::vector<double> plainWall, otherWall, plainCpu, otherCpu, wallRatio, cpuRatio;
  for (int round = 0; round < rounds; ++round) {
    Cost a;
    Cost b;
    if (round % 2 == 0) {
      a = costOf(plain);
      b = costOf(other);
    } else {
      b = costOf(other);
      a = costOf(plain);
    }
    plainWall.push_back(a.wall);
    otherWall.push_back(b.wall);
    plainCpu.push_back(a.processor);
    otherCpu.push_back(b.processor);
    wallRatio.push_back(b.wall / a.wall);
    cpuRatio.push_back(b.processor / a.processor);
  }
  const auto [wallLow, wallHigh] = std::minmax_element(wallRatio.begin(), wallRatio.end());
  const auto [cpuLow, cpuHigh] = std::minmax_element(cpuRatio.begin(), cpuRatio.end());
  std::printf("%s (%d rounds)\n", title, rounds);
  std::printf("  wall s       %.3f against %.3f   ratio %.3f (%.3f-%.3f)\n", median(otherWall),
              median(plainWall), median(wallRatio), *wallLow, *wallHigh);
  std::printf("  processor s  %.3f against %.3f   ratio %.3f (%.3f-%.3f)\n", median(otherCpu),
              median(plainCpu), median(cpuRatio), *cpuLow, *cpuHigh);
  std::fflush(stdout);
}

// sample.jpg with random scan data up to `size` bytes: its bytes up to the start of scan,
// random bytes with each 0xFF stuffed as the format wants (0xFF 0x00), then the end of image.
std::string bigJpeg(std::size_t size) {
  const std::string sample = contents(sourceFolder / "tests/data/sample.jpg");
  const auto scan = sample.find("\xFF\xDA");
  const std::size_t scanLength = (static_cast<unsigned char>(sample[scan + 2]) << 8) |
                                 static_cast<unsigned char>(sample[scan + 3]);
  std::string jpeg = sample.substr(0, scan + 2 + scanLength);
  std::mt19937 random(7);
  while (jpeg.size() < size - 2) {
    const char byte = static_cast<char>(random() & 0xFF);
    jpeg += byte;
    if (byte == '\xFF') {
      jpeg += '\0';
    }
  }
  return jpeg + "\xFF\xD9";
}

}  // namespace

int main(int argc, char** argv) {
  const int rounds = argc > 1 ? std::atoi(argv[1]) : 11;
  const int reads = argc > 2 ? std::atoi(argv[2]) : 20;
  char pattern[] = "/tmp/lorvane-bench-XXXXXX";
  const fs::path folder = ::mkdtemp(pattern);
  std::printf("load average before: %s\n", loadAverage().c_str());

  {
    const std::string jpeg = bigJpeg(5 * 1000 * 1000);
    const fs::path file = folder / "big.jpg";
    std::ofstream(file, std::ios::binary) << jpeg;
    const std::vector<std::byte> bytes(
        reinterpret_cast<const std::byte*>(jpeg.data()),
        reinterpret_cast<const std::byte*>(jpeg.data()) + jpeg.size());
    MetadataReader reader({.jobs = 1});
    for (int i = 0; i < 3; ++i) {
      if (reader.read(file.string()).error || reader.readBytes(bytes, "big.jpg").error) {
        std::fprintf(stderr, "the 5 MB JPEG was not read\n");
        return 1;
      }
    }
    char title[128];
    std::snprintf(title, sizeof title, "readBytes against read, %d reads of a %zu-byte JPEG a side",
                  reads, jpeg.size());
    compare(
        title, rounds,
        [&] {
          for (int i = 0; i < reads; ++i) {
            reader.read(file.string());
          }
        },
        [&] {
          for (int i = 0; i < reads; ++i) {
            reader.readBytes(bytes, "big.jpg");
          }
        });
  }

  {
    // One DNG and one sidecar, copied 2,000 times: the varied files' TIFF with the tags of
    // their Canon JPEG (EXIF and maker notes, 87 tags in all), and a sidecar with the few
    // edits an application keeps there.
    const fs::path tiff = folder / "one.dng";
    const fs::path varied = folder / "varied";
    const std::string made = "python3 " + (sourceFolder / "tools/make-varied-files.py").string() +
                             " " + varied.string() + " > /dev/null && cp " +
                             (varied / "image.tif").string() + " " + tiff.string() +
                             " && exiftool -q -overwrite_original -tagsfromfile " +
                             (varied / "canon.jpg").string() + " -all:all -DNGVersion=1.4.0.0 " +
                             tiff.string() + " && exiftool -q -o " + (folder / "one.xmp").string() +
                             " -XMP-dc:Title=Harbour -XMP-dc:Description=Evening -XMP-xmp:Rating=3"
                             " -XMP-xmp:Label=Red -XMP-dc:Subject=sea -XMP-dc:Subject=boats";
    if (std::system(made.c_str()) != 0) {
      std::fprintf(stderr, "could not make the DNG and its sidecar\n");
      return 1;
    }
    const fs::path many = folder / "many";
    fs::create_directory(many);
    std::vector<std::string> files;
    for (int i = 0; i < 2000; ++i) {
      char name[32];
      std::snprintf(name, sizeof name, "f%04d", i);
      fs::copy_file(tiff, many / (std::string(name) + ".dng"));
      fs::copy_file(folder / "one.xmp", many / (std::string(name) + ".xmp"));
      files.push_back((many / (std::string(name) + ".dng")).string());
    }
    MetadataReader ignoring({.jobs = 2});
    MetadataReader merging({.jobs = 2, .sidecars = SidecarPolicy::merge});
    std::size_t sidecars = 0;
    const auto readAll = [&](MetadataReader& reader) {
      reader.readEach(files, [&](FileTags&& file) { sidecars += file.sidecars.size(); });
    };
    readAll(ignoring);
    readAll(merging);
    if (sidecars != files.size()) {
      std::fprintf(stderr, "%zu sidecars read, not %zu\n", sidecars, files.size());
      return 1;
    }
    compare(
        "2,000 DNGs with a sidecar each, merge against ignore, 2 tools", rounds,
        [&] { readAll(ignoring); }, [&] { readAll(merging); });
  }

  std::printf("load average after: %s\n", loadAverage().c_str());
  fs::remove_all(folder);
  return 0;
}
