// The catalogue's frame: its named constants, lists and tables, and their once-only building.

#include "catalogue_support.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <thread>
#include <vector>

using namespace lorvane;

TEST(CatalogueFrame, StreamListsAreSlicesOfAllCasesAndHoldTheNamedConstants) {
  const auto exif = TagItem::allStreamsEXIF();
  EXPECT_EQ(exif[26], &TagItem::itemEXIFOrientation());
  const auto all = TagItem::allCases();
  const auto first = std::ranges::find(all, exif.front());
  ASSERT_NE(first, all.end());
  EXPECT_TRUE(std::equal(exif.begin(), exif.end(), first));
  EXPECT_EQ(TagItem::allStreamsZIP().back(), all.back());
}

TEST(CatalogueFrame, StreamsInByteOrderWithMakerStreamsApart) {
  const auto streams = TagStream::allCases();
  ASSERT_EQ(streams.size(), 141u);
  EXPECT_TRUE(std::ranges::is_sorted(streams, {}, &TagStream::rawValue));  // "APP15" < "APP2"
  EXPECT_EQ(std::ranges::count(streams, TagStream::streamIFD0()), 0);
  EXPECT_EQ(TagStream::streamSRF_().rawValue(), "SRF#");  // named by its safe value

  const auto makers = TagStream::makerStreams();
  ASSERT_EQ(makers.size(), 45u);
  EXPECT_EQ(makers.front(), TagStream::streamAdobeDNG());
  EXPECT_EQ(std::ranges::count(makers, TagStream::streamIFD0()), 1);
}

TEST(CatalogueFrame, FirstUsesThatRaceGetOneObject) {
  // Streams nobody else in this program touches, so that the threads meet on first use.
  std::vector<const TagItem*> items(8);
  std::vector<const TagStrings*> strings(8);
  std::vector<const TagItem* const*> lists(8);
  std::vector<std::thread> threads;
  for (std::size_t thread = 0; thread < items.size(); ++thread) {
    threads.emplace_back([&, thread] {
      items[thread] = &TagItem::itemRicohFacesDetected();
      strings[thread] = &TagStrings::stringsRicoh();
      lists[thread] = TagItem::allStreamsRicoh().data();
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  for (std::size_t thread = 1; thread < items.size(); ++thread) {
    EXPECT_EQ(items[thread], items[0]);
    EXPECT_EQ(strings[thread], strings[0]);
    EXPECT_EQ(lists[thread], lists[0]);
  }
  EXPECT_EQ(&items[0]->strings(), strings[0]);
}
