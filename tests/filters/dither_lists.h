// The matrices of the ordered dither as the tests know them: a name with the size, then the rows.
#pragma once

#include <sstream>
#include <string>
#include <vector>

namespace filter_testing {

struct DitherList {
  std::string name;
  int size = 0;
  std::vector<int> thresholds;
};

// By the numbers of the constants, the first one at 0.
inline std::vector<DitherList> DitherLists() {
  std::istringstream text(R"(
@ DitherMagic2x2Matrix 2
0 2
3 1
@ DitherMagic4x4Matrix 4
0 14 3 13
11 5 8 6
12 2 15 1
7 9 4 10
@ DitherOrdered4x4Matrix 4
0 8 2 10
12 4 14 6
3 11 1 9
15 7 13 5
@ DitherLines4x4Matrix 4
0 1 2 3
4 5 6 7
8 9 10 11
12 13 14 15
@ Dither90Halftone6x6Matrix 6
29 18 12 19 30 34
17 7 4 8 20 28
11 3 0 1 9 27
16 6 2 5 13 26
25 15 10 14 21 31
33 25 24 23 33 36
@ DitherOrdered6x6Matrix 6
1 59 15 55 2 56
12 52 33 17 47 31
34 18 44 28 9 49
5 63 10 50 6 60
41 25 37 21 42 26
38 22 3 57 13 53
@ DitherOrdered8x8Matrix 8
1 235 59 219 15 231 55 215
2 232 56 216 12 228 52 212
129 65 187 123 143 79 183 119
130 66 184 120 140 76 180 116
33 193 17 251 47 207 31 247
34 194 18 248 44 204 28 244
161 97 145 81 175 111 159 95
162 98 146 82 172 108 156 92
@ DitherCluster3Matrix 6
9 11 10 8 6 7
12 17 16 5 0 1
13 14 15 4 3 2
8 6 7 9 11 10
5 0 1 12 17 16
4 3 2 13 14 15
@ DitherCluster4Matrix 8
18 20 19 16 13 11 12 15
27 28 29 22 4 3 2 9
26 31 30 21 5 0 1 10
23 25 24 17 8 6 7 14
13 11 12 15 18 20 19 16
4 3 2 9 27 28 29 22
5 0 1 10 26 31 30 21
8 6 7 14 23 25 24 17
@ DitherCluster8Matrix 16
64 69 77 87 86 76 68 67 63 58 50 40 41 51 59 60
70 94 100 109 108 99 93 75 57 33 27 18 19 28 34 52
78 101 114 116 115 112 98 83 49 26 13 11 12 15 29 44
88 110 123 124 125 118 107 85 39 17 4 3 2 9 20 42
89 111 122 127 126 117 106 84 38 16 5 0 1 10 21 43
79 102 119 121 120 113 97 82 48 25 8 6 7 14 30 45
71 95 103 104 105 96 92 74 56 32 24 23 22 31 35 53
65 72 80 90 91 81 73 66 62 55 47 37 36 46 54 61
63 58 50 40 41 51 59 60 64 69 77 87 86 76 68 67
57 33 27 18 19 28 34 52 70 94 100 109 108 99 93 75
49 26 13 11 12 15 29 44 78 101 114 116 115 112 98 83
39 17 4 3 2 9 20 42 88 110 123 124 125 118 107 85
38 16 5 0 1 10 21 43 89 111 122 127 126 117 106 84
48 25 8 6 7 14 30 45 79 102 119 121 120 113 97 82
56 32 24 23 22 31 35 53 71 95 103 104 105 96 92 74
62 55 47 37 36 46 54 61 65 72 80 90 91 81 73 66
)");
  std::vector<DitherList> lists;
  std::string mark;
  while (text >> mark) {
    DitherList list;
    text >> list.name >> list.size;
    list.thresholds.resize(static_cast<size_t>(list.size * list.size));
    for (int &threshold : list.thresholds) text >> threshold;
    lists.push_back(list);
  }
  return lists;
}

}  // namespace filter_testing
