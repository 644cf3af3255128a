#include "TidemarCore/NameOrder.h"
#include "support/Testing.h"

namespace tidemar::testing {
namespace {

/// Names in their order. Accents are spelled out, since an editor may compose them.
const std::vector<std::string> namesInOrder = {
    "10",
    "9",  // digits have no value
    "A",
    "Z",
    "a",
    "a b",
    "aa",
    "abcdefgh",
    "abcdefgh ",
    "abcdefghi",
    "ez",
    "z",
    "\xac",              // not UTF-8: placed by its byte, before the lead byte of é
    "e\u0301",           // é in two scalars sorts as é, behind z
    "\u00e9",            // the same name composed: equal keys, told apart by the bytes
    "e\u0301a",          //
    "\u00e9b",           //
    "e\u0301c",          //
    "\u00ea",            // ê
    "\u1100\u1161",      // two jamo sort as their syllable U+AC00, far behind U+1100
    "\xed\xa0\x80",      // a surrogate is not UTF-8
    "\uffee",            //
    "\U0001f600",        // as UTF-16 it would stand before U+FFEE
    "\xff",              //
    "\xff\x65\xcc\x81",  // not UTF-8, so nothing in it is composed
    "\xff\xc3\xa9",
};

TEST(NameOrder, isAStrictTotalOrderByComposedScalarsThenBytes) {
  for (std::size_t i = 0; i < namesInOrder.size(); ++i) {
    for (std::size_t j = 0; j < namesInOrder.size(); ++j) {
      EXPECT_EQ(nameSortsBefore(namesInOrder[i], namesInOrder[j]), i < j)
          << ::testing::PrintToString(namesInOrder[i]) << " and "
          << ::testing::PrintToString(namesInOrder[j]);
    }
  }
}

struct Element {
  const Item* item;
  Date date;
};

TEST(NameOrder, sortsItemsOfEqualDateWhateverDirectoryTheyLieIn) {
  std::vector<Item> items = {item("zz", 0)};
  for (std::size_t i = 0; i < namesInOrder.size(); ++i) {
    const FileURL directory(i % 2 == 0 ? "/z" : "/a");
    items.push_back({directory.appendingPathComponent(namesInOrder[i]), std::nullopt, 0});
  }
  items.push_back(item("!", 0));

  std::vector<Element> elements;
  for (auto item = items.rbegin(); item != items.rend(); ++item)
    elements.push_back({&*item, {7}});
  elements.front().date = {8};
  elements.back().date = {6};
  sortByDateThenName(elements, &Element::date);
  ASSERT_EQ(elements.size(), items.size());
  for (std::size_t i = 0; i < items.size(); ++i)
    EXPECT_EQ(elements[i].item, &items[i]) << i;
  EXPECT_EQ(elements.front().date, Date{6});
  EXPECT_EQ(elements.back().date, Date{8});
}

TEST(NameOrder, holdsForManyItemsHoweverTheirDatesAreSpread) {
  // The numbers are taken in an order without a pattern; names of many items begin alike.
  constexpr int count = 3000;
  const auto shuffled = [](int i) { return i * 7919 % count; };
  const std::pair<const char*, std::function<double(int)>> rows[] = {
      {"spread evenly", [](int i) { return 1.7e9 + i * 0.001; }},
      {"few dates", [](int i) { return 1.7e9 + i % 7; }},
      {"one date", [](int) { return 1.7e9; }},
      {"one far from the others", [](int i) { return i == 5 ? 0 : 1.7e9 + i / 2 * 1e-6; }},
      {"before 1970", [](int i) { return -1e9 + i / 3; }},
      {"farther apart than a number can say", [](int i) { return (i % 3 - 1) * 1.5e308; }},
      {"hardly apart", [](int i) { return i % 3 * 5e-324; }},
  };
  for (const auto& [name, date] : rows) {
    std::vector<Item> items;
    for (int i = 0; i < count; ++i)
      items.push_back(item("some name " + std::to_string(shuffled(i)), 0));
    std::vector<Element> elements;
    for (int i = 0; i < count; ++i)
      elements.push_back({&items[static_cast<std::size_t>(i)], {date(shuffled(i))}});
    const auto key = [](const Element& element) {
      return std::pair(element.date, element.item->url.lastPathComponent());
    };
    std::vector<Element> expected = elements;
    std::ranges::sort(expected, {}, key);
    sortByDateThenName(elements, &Element::date);
    EXPECT_TRUE(std::ranges::equal(elements, expected, {}, key, key)) << name;
  }
}

}  // namespace
}  // namespace tidemar::testing
