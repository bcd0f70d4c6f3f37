#include "package/IconVector.h"
#include "package/BinaryXml.h"
#include "package/XmlValues.h"

#include "package/IconFixture.h"

using namespace quillnest;
using namespace quillnest::build;
using ::testing::Test;

namespace
{

constexpr const char *square = "M0 0h10v10h-10z";
constexpr const char *squareText = "MLLLZ 0 0 10 0 10 10 0 10";

Tag path(std::vector<std::pair<std::string, Value>> attributes, const char *data = square)
{
    attributes.insert(attributes.begin(), {"pathData", literal(data)});
    return {"path", std::move(attributes)};
}

Tag filled(std::uint32_t color = 0xFFFF0000)
{
    return path({{"fillColor", argb(color)}});
}

class IconVectorDrawing : public IconFixture
{
protected:
    std::optional<Image> render(const Tag &root, int depth = 0)
    {
        return IconVector::render(source(), compile(root), depth);
    }

    /// What a vector of 192 units draws, so that lengths stay as they are: its operations after the two of the canvas.
    std::string drawn(std::vector<Tag> children)
    {
        recording.lines.clear();
        render({"vector", {{"viewportWidth", real(192)}, {"viewportHeight", real(192)}}, std::move(children)});
        recording.lines.erase(recording.lines.begin(), recording.lines.begin() + 2);
        return recording.all();
    }

    std::string drawn(Tag only) { return drawn(std::vector{std::move(only)}); }

    /// A gradient in a file of its own.
    std::uint32_t gradientResource(std::vector<std::pair<std::string, Value>> attributes, std::vector<Tag> items = {})
    {
        return fileResource(
            "res/gradient" + std::to_string(nextId()) + ".xml",
            compile({"gradient", std::move(attributes), std::move(items)}));
    }
};

Tag item(float offset, std::uint32_t color)
{
    return {"item", {{"offset", real(offset)}, {"color", argb(color)}}};
}

} // namespace

TEST_F(IconVectorDrawing, aVectorWithoutAViewportHas108Units)
{
    EXPECT_TRUE(render({"vector", {}, {filled()}}));
    EXPECT_EQ(recording.lines.at(0), "translate 0 192");
    EXPECT_EQ(recording.lines.at(1), "scale 1.77778 -1.77778");
}

TEST_F(IconVectorDrawing, theViewportFillsTheCanvasEachWay)
{
    EXPECT_TRUE(render({"vector", {{"viewportWidth", real(24)}, {"viewportHeight", integer(48)}}, {filled()}}));
    EXPECT_EQ(recording.lines.at(1), "scale 8 -4");
}

TEST_F(IconVectorDrawing, aViewportOfNothingIsAbsent)
{
    EXPECT_FALSE(render({"vector", {{"viewportWidth", real(0)}}, {filled()}}));
    EXPECT_FALSE(render({"vector", {{"viewportHeight", real(-24)}}, {filled()}}));
    EXPECT_FALSE(render({"vector", {{"viewportHeight", real(NAN)}}, {filled()}}));
    EXPECT_TRUE(recording.lines.empty());
}

TEST_F(IconVectorDrawing, aVectorThatPaintsNothingIsAbsent)
{
    EXPECT_FALSE(render({"vector", {}, {}}));
    EXPECT_FALSE(render({"vector", {}, {path({})}}));
    EXPECT_FALSE(render({"vector", {}, {{"group", {}, {path({})}}}}));
    EXPECT_TRUE(render({"vector", {}, {{"group", {}, {filled()}}}}));
}

TEST_F(IconVectorDrawing, aStrokeOfNoWidthPaintsNothing)
{
    EXPECT_FALSE(render({"vector", {}, {path({{"strokeColor", argb(0xFF000000)}, {"strokeWidth", real(0)}})}}));
    EXPECT_FALSE(render({"vector", {}, {path({{"strokeColor", argb(0xFF000000)}})}}));
    EXPECT_TRUE(render({"vector", {}, {path({{"strokeColor", argb(0xFF000000)}, {"strokeWidth", real(1)}})}}));
}

TEST_F(IconVectorDrawing, aPathIsFilledInAStateOfItsOwn)
{
    EXPECT_EQ(
        drawn(filled(0x80FF0000)),
        std::string("save; alpha 1; fillColor 80ff0000; fill winding ") + squareText + "; restore");
}

TEST_F(IconVectorDrawing, theFillTypeOneIsEvenOdd)
{
    const auto with = [this](int type) {
        return drawn(path({{"fillColor", argb(0xFFFF0000)}, {"fillType", integer(type)}}));
    };
    EXPECT_NE(with(1).find("fill evenodd"), std::string::npos);
    EXPECT_NE(with(0).find("fill winding"), std::string::npos);
    EXPECT_NE(with(2).find("fill winding"), std::string::npos);
}

TEST_F(IconVectorDrawing, theStrokeComesAfterTheFillWithItsOwnState)
{
    EXPECT_EQ(
        drawn(path(
            {{"fillColor", argb(0xFFFF0000)},
             {"fillAlpha", real(0.25)},
             {"strokeColor", argb(0xFF00FF00)},
             {"strokeAlpha", real(0.5)},
             {"strokeWidth", real(3)},
             {"strokeLineCap", integer(2)},
             {"strokeLineJoin", integer(1)}})),
        std::string("save; alpha 0.25; fillColor ffff0000; fill winding ") + squareText
            + "; restore; save; alpha 0.5; strokeColor ff00ff00; lineWidth 3; lineCap 2; lineJoin 1; stroke "
            + squareText + "; restore");
}

TEST_F(IconVectorDrawing, capsAndJoinsAreCountedByThrees)
{
    const auto with = [this](int cap) {
        return drawn(path(
            {{"strokeColor", argb(0xFF00FF00)},
             {"strokeWidth", real(3)},
             {"strokeLineCap", integer(cap)},
             {"strokeLineJoin", integer(cap + 1)}}));
    };
    EXPECT_NE(with(4).find("lineCap 1; lineJoin 2"), std::string::npos);
    EXPECT_NE(with(5).find("lineCap 2; lineJoin 0"), std::string::npos);
}

TEST_F(IconVectorDrawing, aGradientIsNoStroke)
{
    const auto gradient = gradientResource({}, {item(0, 0xFFFF0000), item(1, 0xFF00FF00)});
    EXPECT_EQ(drawn(path({{"strokeColor", reference(gradient)}, {"strokeWidth", real(3)}})), "");
}

TEST_F(IconVectorDrawing, unreadablePathDataLosesThatPathOnly)
{
    EXPECT_EQ(
        drawn({path({{"fillColor", argb(0xFFFF0000)}}, "z"), filled(), Tag{"path", {{"fillColor", argb(1)}}}}),
        drawn(filled()));
}

TEST_F(IconVectorDrawing, unknownElementsArePassedOverWithAllThatIsInThem)
{
    EXPECT_EQ(drawn({Tag{"animated", {}, {filled(0xFF00FF00)}}, filled()}), drawn(filled()));
}

TEST_F(IconVectorDrawing, theTransformsOfAGroupComeInTheirOrder)
{
    EXPECT_EQ(
        drawn(
            {"group",
             {{"pivotX", real(12)},
              {"pivotY", real(10)},
              {"translateX", real(3)},
              {"translateY", real(4)},
              {"rotation", real(90)},
              {"scaleX", real(2)},
              {"scaleY", real(0.5)}},
             {filled()}}),
        std::string("save; translate 15 14; rotate 1.5708; scale 2 0.5; translate -12 -10; ") + drawn(filled())
            + "; restore");
}

TEST_F(IconVectorDrawing, aPlainGroupChangesNothing)
{
    EXPECT_EQ(
        drawn({"group", {}, {filled()}}),
        "save; translate 0 0; rotate 0; scale 1 1; translate 0 0; " + drawn(filled()) + "; restore");
}

TEST_F(IconVectorDrawing, aClipHoldsForTheSiblingsThatFollowInItsGroup)
{
    const Tag clip{"clip-path", {{"pathData", literal("M0 0h5v5z")}, {"fillType", integer(1)}}};
    const auto one = drawn(filled());
    EXPECT_EQ(
        drawn({Tag{"group", {}, {filled(), clip, filled()}}, filled()}),
        "save; translate 0 0; rotate 0; scale 1 1; translate 0 0; " + one + "; clip winding MLLZ 0 0 5 0 5 5; " + one
            + "; restore; " + one);
    EXPECT_EQ(drawn({clip, filled()}), "clip winding MLLZ 0 0 5 0 5 5; " + one);
    EXPECT_EQ(drawn({Tag{"clip-path", {{"pathData", literal("")}}}, filled()}), one);
}

TEST_F(IconVectorDrawing, aGradientFillIsClippedToItsPathAndKeepsItsOwnCoordinates)
{
    const auto gradient = gradientResource(
        {{"startX", real(1)}, {"startY", real(2)}, {"endX", real(3)}, {"endY", real(4)}},
        {item(0, 0xFFFF0000), item(1, 0xFF00FF00)});
    EXPECT_EQ(
        drawn(path({{"fillColor", reference(gradient)}, {"fillType", integer(1)}})),
        std::string("save; alpha 1; clip evenodd ") + squareText + "; linear 0:ffff0000,1:ff00ff00 1 2 3 4; restore");
}

TEST_F(IconVectorDrawing, theFillAlphaAppliesToAGradientAsWell)
{
    const auto gradient = gradientResource({}, {item(0, 0xFFFF0000), item(1, 0xFF00FF00)});
    EXPECT_EQ(
        drawn(path({{"fillColor", reference(gradient)}, {"fillAlpha", real(0.5)}})).find("save; alpha 0.5; clip"), 0U);
}

TEST_F(IconVectorDrawing, stopsKeepTheOrderOfTheirItems)
{
    const auto gradient = gradientResource({}, {item(0.75, 0xFFFF0000), item(0.25, 0xFF00FF00), item(0.5, 0xFF0000FF)});
    EXPECT_NE(
        drawn(path({{"fillColor", reference(gradient)}})).find("linear 0.75:ffff0000,0.25:ff00ff00,0.5:ff0000ff "),
        std::string::npos);
}

TEST_F(IconVectorDrawing, withoutItemsTheThreeColoursAreTheStops)
{
    const auto three = gradientResource(
        {{"startColor", argb(0xFF000001)}, {"centerColor", argb(0xFF000002)}, {"endColor", argb(0xFF000003)}});
    EXPECT_NE(
        drawn(path({{"fillColor", reference(three)}})).find("linear 0:ff000001,0.5:ff000002,1:ff000003 0 0 0 0"),
        std::string::npos);
    const auto two = gradientResource({{"endColor", argb(0xFF000003)}, {"startColor", argb(0xFF000001)}});
    EXPECT_NE(drawn(path({{"fillColor", reference(two)}})).find("linear 0:ff000001,1:ff000003"), std::string::npos);
}

TEST_F(IconVectorDrawing, oneStopIsAPlainColourAndNoneIsNothing)
{
    const auto one = gradientResource({{"startColor", argb(0xFF000001)}});
    EXPECT_NE(drawn(path({{"fillColor", reference(one)}})).find("fillColor ff000001; fill"), std::string::npos);
    EXPECT_EQ(drawn(path({{"fillColor", reference(gradientResource({}))}})), "");
    // An item without a colour is no stop, and the three colours then stand.
    const auto empty = gradientResource({{"startColor", argb(0xFF000002)}}, {{"item", {{"offset", real(1)}}}});
    EXPECT_NE(drawn(path({{"fillColor", reference(empty)}})).find("fillColor ff000002; fill"), std::string::npos);
}

TEST_F(IconVectorDrawing, aRadialGradientGrowsFromItsCentre)
{
    const auto radial = gradientResource(
        {{"type", integer(1)}, {"centerX", real(5)}, {"centerY", real(6)}, {"gradientRadius", real(7)}},
        {item(0, 0xFFFF0000), item(1, 0xFF00FF00)});
    EXPECT_NE(
        drawn(path({{"fillColor", reference(radial)}})).find("radial 0:ffff0000,1:ff00ff00 5 6 7"), std::string::npos);
    const auto bare = gradientResource({{"type", integer(1)}}, {item(0, 0xFFFF0000), item(1, 0xFF00FF00)});
    EXPECT_NE(
        drawn(path({{"fillColor", reference(bare)}})).find("radial 0:ffff0000,1:ff00ff00 0 0 1"), std::string::npos);
}

TEST_F(IconVectorDrawing, aSweepWithAStartAndAnEndIsDrawnBetweenThem)
{
    const auto sweep = gradientResource(
        {{"type", integer(2)}, {"startX", real(1)}, {"startY", real(2)}, {"endX", real(3)}, {"endY", real(4)}},
        {item(0, 0xFFFF0000), item(1, 0xFF00FF00)});
    EXPECT_NE(
        drawn(path({{"fillColor", reference(sweep)}})).find("linear 0:ffff0000,1:ff00ff00 1 2 3 4"), std::string::npos);
}

TEST_F(IconVectorDrawing, aColourFileIsDecodedOnceHoweverOftenItIsUsed)
{
    // A tenth of what may be read: decoded for each path, it would be refused after a few.
    std::vector<Tag> items(2000, Tag{"item", {{"offset", real(0)}}});
    items.push_back({"item", {{"color", argb(0xFF000001)}}});
    const auto color = fileResource("res/color.xml", compile({"gradient", {}, items}));
    const std::vector<Tag> paths(
        100, Tag{"path", {{"pathData", literal("M0 0h9v9z")}, {"fillColor", reference(color)}}});
    EXPECT_TRUE(render({"vector", {}, paths}));
    EXPECT_FALSE(source().isExhausted());
}

TEST_F(IconVectorDrawing, aSweepIsDrawnAlongALine)
{
    const auto sweep
        = gradientResource({{"type", integer(2)}, {"centerX", real(5)}}, {item(0, 0xFFFF0000), item(1, 0xFF00FF00)});
    EXPECT_NE(
        drawn(path({{"fillColor", reference(sweep)}})).find("linear 0:ffff0000,1:ff00ff00 0 0 0 0"), std::string::npos);
}

TEST_F(IconVectorDrawing, aStopsColourMayBeAResource)
{
    const auto green = resource({{0, argb(0xFF00FF00)}});
    const auto inner = gradientResource({{"startColor", argb(0xFF000001)}, {"endColor", argb(0xFF000002)}});
    const auto gradient = gradientResource(
        {},
        {item(0, 0xFFFF0000),
         {"item", {{"offset", real(1)}, {"color", reference(green)}}},
         {"item", {{"color", reference(inner)}}}});
    EXPECT_NE(
        drawn(path({{"fillColor", reference(gradient)}})).find("linear 0:ffff0000,1:ff00ff00 "), std::string::npos);
}

TEST_F(IconVectorDrawing, aColourResourceIsItsFirstColourInTheTable)
{
    const auto color = resource({{0, reference(1)}, {160, argb(0xFF000001)}, {0, argb(0xFF000002)}});
    EXPECT_NE(drawn(path({{"fillColor", reference(color)}})).find("fillColor ff000001;"), std::string::npos);
}

TEST_F(IconVectorDrawing, aSelectorIsItsFirstState)
{
    const auto selector = fileResource(
        "res/states.xml",
        compile({"selector", {}, {{"item", {{"color", argb(0xFF000007)}}}, {"item", {{"color", argb(0xFF000008)}}}}}));
    EXPECT_NE(drawn(path({{"fillColor", reference(selector)}})).find("fillColor ff000007;"), std::string::npos);
    const auto empty = fileResource("res/none.xml", compile({"selector"}));
    EXPECT_EQ(drawn(path({{"fillColor", reference(empty)}})), "");
}

TEST_F(IconVectorDrawing, aFileThatIsNoColourGivesWayToTheNext)
{
    files["res/a.xml"] = compile({"vector"});
    files["res/b.xml"] = {1, 2, 3};
    files["res/d.xml"] = compile({"gradient", {{"startColor", argb(0xFF000009)}}});
    const auto color = resource(
        {{0, literal("res/a.xml")},
         {0, literal("res/b.xml")},
         {0, literal("res/c.xml")},
         {0, literal("res/d.png")},
         {0, literal("res/d.xml")}});
    EXPECT_NE(drawn(path({{"fillColor", reference(color)}})).find("fillColor ff000009;"), std::string::npos);
    EXPECT_EQ(reads("res/d.png"), 0);
}

TEST_F(IconVectorDrawing, coloursThatReferToThemselvesEndInNothing)
{
    const auto id = nextId();
    fileResource("res/circle.xml", compile({"selector", {}, {{"item", {{"color", reference(id)}}}}}));
    EXPECT_EQ(drawn(path({{"fillColor", reference(id)}})), "");
    const auto next = nextId();
    fileResource(
        "res/fan.xml", compile({"gradient", {}, std::vector<Tag>(40, Tag{"item", {{"color", reference(next)}}})}));
    EXPECT_EQ(drawn(path({{"fillColor", reference(next)}})), "");
    EXPECT_EQ(reads("res/fan.xml"), 1);
}

TEST_F(IconVectorDrawing, numbersOfAllKinds)
{
    const auto value = [](const Value &written) {
        const BinaryXml::Attr attr{
            .type = static_cast<std::uint8_t>(written.type), .data = written.data, .string = std::nullopt};
        return XmlValues::floatValue(&attr);
    };
    EXPECT_EQ(value(real(1.5)), 1.5);
    EXPECT_EQ(value(dimension(24)), 24);
    EXPECT_EQ(value(dimension(-3)), -3);
    EXPECT_EQ(value({.type = 5, .data = 0x00000300 | 0x10 | 5}), 768.0 / 32768);
    EXPECT_EQ(value({.type = 5, .data = 0x00000100 | 0x20 | 5}), 256.0 / 8388608);
    EXPECT_EQ(value(percent(50)), 0.5);
    EXPECT_EQ(value(integer(-7)), -7);
    EXPECT_EQ(value({.type = 17, .data = 0xFF}), 255);
    EXPECT_EQ(value(reference(7)), std::nullopt);
    EXPECT_EQ(value(literal("7")), std::nullopt);
    EXPECT_EQ(value(argb(7)), std::nullopt);
    EXPECT_EQ(XmlValues::floatValue(nullptr), std::nullopt);
}

TEST_F(IconVectorDrawing, aReferenceInThePlaceOfANumberLeavesTheDefault)
{
    const auto ten = resource({{0, real(10)}});
    EXPECT_TRUE(render({"vector", {{"viewportWidth", reference(ten)}}, {filled()}}));
    EXPECT_EQ(recording.lines.at(1), "scale 1.77778 -1.77778");
}

TEST_F(IconVectorDrawing, aColourRootFillsTheSquare)
{
    EXPECT_TRUE(render({"color", {{"color", argb(0xFF123456)}}}));
    EXPECT_EQ(recording.all(), "fillColor ff123456; rect 0 0 192 192");
    EXPECT_FALSE(render({"color"}));
}

TEST_F(IconVectorDrawing, aShapeIsItsSolidColour)
{
    const Tag solid{"solid", {{"color", argb(0xFF123456)}}};
    EXPECT_TRUE(render({"shape", {}, {{"corners"}, solid}}));
    EXPECT_EQ(recording.all(), "fillColor ff123456; rect 0 0 192 192");
    recording.lines.clear();
    EXPECT_TRUE(render({"shape", {{"shape", integer(1)}}, {solid}}));
    EXPECT_EQ(recording.all(), "fillColor ff123456; ellipse 0 0 192 192");
}

TEST_F(IconVectorDrawing, aShapeWithoutASolidColourIsAbsent)
{
    EXPECT_FALSE(render({"shape", {}, {{"gradient", {{"startColor", argb(0xFF123456)}}}}}));
    EXPECT_FALSE(render({"shape", {{"color", argb(0xFF123456)}}}));
    const auto gradient = gradientResource({}, {item(0, 0xFFFF0000), item(1, 0xFF00FF00)});
    EXPECT_FALSE(render({"shape", {}, {{"solid", {{"color", reference(gradient)}}}}}));
    EXPECT_TRUE(recording.lines.empty());
}

TEST_F(IconVectorDrawing, anInsetOfAQuarterLeavesTheMiddleHalf)
{
    const auto inner = fileResource("res/inner.xml", compile({"color", {{"color", argb(0xFF123456)}}}));
    EXPECT_TRUE(render({"inset", {{"drawable", reference(inner)}, {"inset", percent(25)}}}));
    EXPECT_EQ(recording.lines.back(), "image 1 48 48 96 96");
}

TEST_F(IconVectorDrawing, eachSideOfAnInsetHasItsOwnValue)
{
    const auto inner = fileResource("res/inner.xml", compile({"color", {{"color", argb(0xFF123456)}}}));
    EXPECT_TRUE(render(
        {"inset",
         {{"drawable", reference(inner)},
          {"insetLeft", dimension(27)},
          {"insetTop", real(54)},
          {"insetRight", integer(9)},
          {"inset", percent(50)},
          {"insetBottom", reference(1)}}}));
    EXPECT_EQ(recording.lines.back(), "image 1 48 0 128 96");
}

TEST_F(IconVectorDrawing, anInsetWithoutAReferenceIsAbsent)
{
    EXPECT_FALSE(render({"inset", {}, {filled()}}));
    EXPECT_FALSE(render({"inset", {{"drawable", argb(0xFF123456)}}}));
    EXPECT_FALSE(render({"inset", {{"drawable", reference(0x7F010099)}}}));
}

TEST_F(IconVectorDrawing, otherRootsAreAbsent)
{
    EXPECT_FALSE(render({"layer-list", {}, {filled()}}));
    EXPECT_FALSE(IconVector::render(source(), ByteView(), 0));
    EXPECT_FALSE(IconVector::render(source(), Blob{3, 0, 8, 0}, 0));
}

TEST_F(IconVectorDrawing, aCanvasThatCannotBeMadeIsAbsent)
{
    recording.refusesCanvases = true;
    EXPECT_FALSE(render({"vector", {}, {filled()}}));
    EXPECT_FALSE(render({"color", {{"color", argb(0xFF123456)}}}));
}

TEST_F(IconVectorDrawing, theTreeNestsAsTheFileDoes)
{
    const auto document = source().decode(compile({"a", {}, {{"b", {}, {{"c"}}}, {"d"}}}));
    const auto *root = document.root.get();
    ASSERT_TRUE(root);
    EXPECT_EQ(root->name, "a");
    ASSERT_EQ(root->children.size(), 2U);
    EXPECT_EQ(root->children[0]->children.at(0)->name, "c");
    EXPECT_EQ(root->children[1]->name, "d");
}

TEST_F(IconVectorDrawing, aLaterTopLevelElementIsTheRoot)
{
    const auto file
        = xmlFile({pool({"a", "b"}), startElement(0), endElement(0), endElement(0), startElement(1), startElement(0)});
    const auto document = source().decode(file);
    const auto *root = document.root.get();
    ASSERT_TRUE(root);
    EXPECT_EQ(root->name, "b");
    EXPECT_EQ(root->children.size(), 1U);
}

TEST_F(IconVectorDrawing, elementsNestedDeeperThanAnyRealFileAreLeftOut)
{
    Writer body;
    for (int i = 0; i < 100000; ++i)
        body.add(startElement(0));
    for (int i = 0; i < 100000; ++i)
        body.add(endElement(0));
    body.add(startElement(1));
    const auto document = source().decode(xmlFile({pool({"group", "last"}), body.bytes()}));
    const auto *root = document.root.get();
    ASSERT_TRUE(root);
    EXPECT_EQ(root->name, "last");
    const auto nestedDocument = source().decode(xmlFile({pool({"vector", "group"}), startElement(0), body.bytes()}));
    const auto *nested = nestedDocument.root.get();
    ASSERT_TRUE(nested);
    int depth = 1;
    for (const auto *node = nested; !node->children.empty(); node = node->children.front().get())
        ++depth;
    EXPECT_GE(depth, 50);
    EXPECT_LE(depth, 200);
}
