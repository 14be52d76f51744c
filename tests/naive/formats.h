// The formats by a list of their own, for the plain loops.
#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace naive {

// The bytes of a pixel by the format's number: g is gray, a dot has no meaning, + is the second byte of a sample.
inline const std::map<int32_t, std::string> kPixelsOfFormat = {
    {1, "RGB"},    {2, "RGBA"},    {3, "RGB."},     {4, "ARGB"},      {5, ".RGB"},   {6, "BGR"},   {7, "BGRA"},
    {8, "BGR."},   {9, "ABGR"},    {10, ".BGR"},    {11, "g"},        {12, "gA"},    {13, "Ag"},   {15, "g.."},
    {16, ".g."},   {17, "..g"},    {18, "g..."},    {19, ".g.."},     {20, "..g."},  {21, "...g"}, {22, "."},
    {23, "CMYK"},  {24, "CMYKA"},  {25, "ACMYK"},   {26, "CMYK."},    {27, ".CMYK"}, {28, "KYMC"}, {29, "KYMCA"},
    {30, "AKYMC"}, {31, "KYMC."},  {32, ".KYMC"},   {33, "."},        {34, ".."},    {35, "..."},  {36, "...."},
    {37, "....."}, {38, "......"}, {39, "......."}, {40, "........"}, {41, "g+"},
};

}  // namespace naive
