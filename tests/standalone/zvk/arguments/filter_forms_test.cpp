#include "standalone/zvk/arguments/filter_forms.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <list>
#include <string>
#include <vector>

#include "standalone/zvk/session/messages.h"

namespace standalone {
namespace {

bool IsFilterText(const std::string &declaration) { return IsFilter(ParseMethod(declaration), "PictureZVK"); }

template <class Work>
std::string ErrorOf(const Work &work) {
  try {
    work();
  } catch (const UsageError &error) {
    return error.what();
  }
  return "no error";
}

// The forms of one filter.
class Filter {
 public:
  explicit Filter(const std::vector<std::string> &declarations) {
    for (const std::string &declaration : declarations) {
      forms_.push_back(&declarations_.emplace_back(ParseMethod(declaration)));
    }
  }

  // The place of the form that the words choose.
  size_t Choose(const std::vector<std::string> &words) const {
    const MethodDeclaration &form = ChooseForm(forms_, ReadGiven(words));
    return static_cast<size_t>(std::find(forms_.begin(), forms_.end(), &form) - forms_.begin());
  }
  std::string Error(const std::vector<std::string> &words) const {
    return ErrorOf([&] { Choose(words); });
  }

 private:
  std::list<MethodDeclaration> declarations_;
  Forms forms_;
};

const Filter &Gamma() {
  static const Filter filter(
      {"GammaFilter(dest as PictureZVK, gamma as double) as PictureZVK",
       "GammaFilter(dest as PictureZVK, gamma as double, alphaGamma as double) as PictureZVK",
       "GammaFilter(dest as PictureZVK, redGamma as double, greenGamma as double, blueGamma as double) as PictureZVK",
       "GammaFilter(dest as PictureZVK, redGamma as double, greenGamma as double, blueGamma as double, alphaGamma as "
       "double) as PictureZVK"});
  return filter;
}

const Filter &Blur() {
  static const Filter filter(
      {"BoxBlurFilter(dest as PictureZVK, Radius as double, Vertical as boolean = true, Horizontal as boolean = true) "
       "as PictureZVK",
       "BoxBlurFilter(dest as PictureZVK, Radius as double, Iterations as integer, Vertical as boolean = true, "
       "Horizontal as boolean = true) as PictureZVK"});
  return filter;
}

TEST(IsFilter, TakesWhatWritesToDestOrReadsOrigpixels) {
  EXPECT_TRUE(IsFilterText("NeonFilter(dest as PictureZVK) as PictureZVK"));
  EXPECT_TRUE(IsFilterText("F(Dest as picturezvk, a as integer, b() as integer, c as color) as PictureZVK"));
  EXPECT_TRUE(IsFilterText("F(origpixels as PictureZVK, Amount as double) as boolean"));
  EXPECT_TRUE(IsFilterText("Rotate90(dest as PictureZVK=nil) as PictureZVK"));
  EXPECT_TRUE(IsFilterText("F(dest as PictureZVK, mask as PictureZVK) as PictureZVK"));
}

TEST(IsFilter, LeavesOutAllOtherMethods) {
  EXPECT_FALSE(IsFilterText("HMirror"));
  EXPECT_FALSE(IsFilterText("CopyPixels(source as PictureZVK) as boolean"));
  EXPECT_FALSE(IsFilterText("F(dest as picture) as PictureZVK"));
  EXPECT_FALSE(IsFilterText("F(dest() as PictureZVK) as PictureZVK"));
  EXPECT_FALSE(IsFilterText("F(a as integer, dest as PictureZVK) as PictureZVK"));
  // Without a result nobody knows where the pixels are, and a memory block cannot be written on a command line.
  EXPECT_FALSE(IsFilterText("F(dest as PictureZVK)"));
  EXPECT_FALSE(IsFilterText("F(dest as PictureZVK) as integer"));
  EXPECT_FALSE(IsFilterText("F(dest as PictureZVK, block as memoryblock) as PictureZVK"));
}

TEST(FormText, TellsEveryArgumentThatIsGivenByName) {
  const auto text = [](const std::string &declaration) { return FormText(ParseMethod(declaration)); };
  EXPECT_EQ(text("NeonFilter(dest as PictureZVK) as PictureZVK"), "");
  EXPECT_EQ(text("ApplyMatrix(dest as PictureZVK, MatrixDimension as integer, matrix() as integer) as PictureZVK"),
            "MatrixDimension=INTEGER matrix=INTEGER,INTEGER,...");
  EXPECT_EQ(text("F(dest as PictureZVK, Radius as double, Vertical as boolean = true) as PictureZVK"),
            "Radius=NUMBER [Vertical=true]");
  EXPECT_EQ(text("UnsharpFilter(origpixels as PictureZVK, Amount as double, Threshold as integer) as boolean"),
            "origpixels=FILE Amount=NUMBER Threshold=INTEGER");
  EXPECT_EQ(text("F(dest as PictureZVK, Black as Color, mask as PictureZVK = nil) as PictureZVK"),
            "Black=#RRGGBB [mask=FILE]");
}

TEST(FormsNamed, AreAllFormsOfTheNameInAnyCase) {
  const MethodDeclaration one = ParseMethod("One(dest as PictureZVK) as PictureZVK");
  const MethodDeclaration two = ParseMethod("Two(dest as PictureZVK) as PictureZVK");
  const MethodDeclaration more = ParseMethod("Two(dest as PictureZVK, a as integer) as PictureZVK");
  EXPECT_EQ(FormsNamed({&one, &two, &more}, "tWO"), (Forms{&two, &more}));
  EXPECT_EQ(ErrorOf([&] {
              FormsNamed({&one, &two, &more}, "Three");
            }),
            "there is no filter 'Three'; choose one of One, Two");
}

TEST(ReadGiven, SplitsWordsAtTheFirstEqualsSign) {
  const std::vector<GivenArgument> given = ReadGiven({"levels=4", "text=a=b", "empty="});
  ASSERT_EQ(given.size(), 3u);
  EXPECT_EQ(given[0].name + "|" + given[0].text, "levels|4");
  EXPECT_EQ(given[1].name + "|" + given[1].text, "text|a=b");
  EXPECT_EQ(given[2].name + "|" + given[2].text, "empty|");
  EXPECT_EQ(FindGiven(given, "LEVELS"), &given[0]);
  EXPECT_EQ(FindGiven(given, "level"), nullptr);
}

TEST(ReadGiven, RefusesWordsWithoutANameAndNamesGivenTwice) {
  EXPECT_EQ(ErrorOf([] { ReadGiven({"4"}); }), "'4' is out of place; behind OUT come arguments as NAME=VALUE");
  EXPECT_EQ(ErrorOf([] { ReadGiven({"=4"}); }), "'=4' is out of place; behind OUT come arguments as NAME=VALUE");
  EXPECT_EQ(ErrorOf([] { ReadGiven({"a=4", "A=5"}); }), "'A' is given twice; give it once");
}

TEST(ChooseForm, TakesTheOneWithTheNamesThatAreGiven) {
  EXPECT_EQ(Gamma().Choose({"gamma=1.8"}), 0u);
  EXPECT_EQ(Gamma().Choose({"GAMMA=1.8", "alphagamma=1"}), 1u);
  EXPECT_EQ(Gamma().Choose({"greenGamma=1", "blueGamma=1", "redGamma=1"}), 2u);
  EXPECT_EQ(Gamma().Choose({"greenGamma=1", "blueGamma=1", "redGamma=1", "alphaGamma=1"}), 3u);
}

TEST(ChooseForm, LetsOptionalArgumentsBeLeftOut) {
  EXPECT_EQ(Blur().Choose({"Radius=3"}), 0u);
  EXPECT_EQ(Blur().Choose({"Radius=3", "Horizontal=false"}), 0u);
  EXPECT_EQ(Blur().Choose({"Radius=3", "Iterations=2"}), 1u);
  EXPECT_EQ(Blur().Choose({"Vertical=false", "Iterations=2", "Radius=3"}), 1u);
  EXPECT_EQ(Filter({"Rotate90(dest as PictureZVK=nil) as PictureZVK"}).Choose({}), 0u);
}

TEST(ChooseForm, TellsWhatIsMissing) {
  EXPECT_EQ(Blur().Error({}), "BoxBlurFilter is not told enough; add Radius=NUMBER");
  EXPECT_EQ(Blur().Error({"Iterations=2"}), "BoxBlurFilter is not told enough; add Radius=NUMBER");
  EXPECT_EQ(Gamma().Error({"redGamma=1"}), "GammaFilter is not told enough; add greenGamma=NUMBER blueGamma=NUMBER");
  // Of two forms that lack as many the shorter one.
  EXPECT_EQ(Gamma().Error({"alphaGamma=1"}), "GammaFilter is not told enough; add gamma=NUMBER");
  EXPECT_EQ(Filter({"UnsharpFilter(origpixels as PictureZVK, Amount as double) as boolean"}).Error({"amount=1"}),
            "UnsharpFilter is not told enough; add origpixels=FILE");
}

TEST(ChooseForm, TellsWhatIsUnknownAndWhatThereIs) {
  EXPECT_EQ(Blur().Error({"Radius=3", "level=1"}),
            "BoxBlurFilter has no argument 'level'; it takes Radius=NUMBER [Vertical=true] [Horizontal=true] or "
            "Radius=NUMBER Iterations=INTEGER [Vertical=true] [Horizontal=true]");
  EXPECT_EQ(Filter({"NeonFilter(dest as PictureZVK) as PictureZVK"}).Error({"level=1"}),
            "NeonFilter has no argument 'level'; it takes none");
}

TEST(ChooseForm, TellsWhatDoesNotGoTogether) {
  EXPECT_THAT(Gamma().Error({"gamma=1", "redGamma=1"}),
              testing::StartsWith("GammaFilter does not take these together: gamma, redGamma; it takes gamma=NUMBER or "
                                  "gamma=NUMBER alphaGamma=NUMBER or redGamma=NUMBER greenGamma=NUMBER"));
}

TEST(ChooseForm, LeavesDestToTheCommand) {
  EXPECT_EQ(Blur().Error({"Dest=a.png", "Radius=3"}), "BoxBlurFilter writes to OUT; leave out Dest");
}

}  // namespace
}  // namespace standalone
