#include <gtest/gtest.h>

#include "App/model/JSONFields.hpp"

namespace tessel {
namespace {

TEST(DecimalJSON, ReadsNumberTokensFromTheirOwnText) {
    const Json document = decimal_json::parse<Json>(R"({"rate": 12.50, "tiny": 0.1, "big": 12345678901234567890.125})");
    EXPECT_EQ(decimal_json::read(document["rate"])->toString(), "12.50");
    EXPECT_EQ(decimal_json::read(document["tiny"])->toString(), "0.1");
    EXPECT_EQ(decimal_json::read(document["big"])->toString(), "12345678901234567890.125");
}

TEST(DecimalJSON, ReadsTextAndIntegers) {
    const Json document = decimal_json::parse<Json>(R"({"a": "330.00", "b": 45, "c": -3, "d": "1,5", "e": true})");
    EXPECT_EQ(decimal_json::read(document["a"])->toString(), "330.00");
    EXPECT_EQ(decimal_json::read(document["b"]), Decimal(45));
    EXPECT_EQ(decimal_json::read(document["c"]), Decimal(-3));
    EXPECT_FALSE(decimal_json::read(document["d"]).has_value());
    EXPECT_FALSE(decimal_json::read(document["e"]).has_value());
}

TEST(DecimalJSON, RefusesAValueThatAlreadyWentThroughADouble) {
    EXPECT_FALSE(decimal_json::read(Json::parse("1.5")).has_value());
}

TEST(DecimalJSON, WritesEitherFormAndRoundTripsTheText) {
    Json document;
    document["asText"] = decimal_json::text<Json>(Decimal("12.50"));
    document["asNumber"] = decimal_json::number<Json>(Decimal("12.50"));
    document["list"] = Json::array({decimal_json::number<Json>(Decimal("-0.5")), "x"});
    const std::string compact = decimal_json::dump(document);
    EXPECT_EQ(compact, R"({"asText":"12.50","asNumber":12.50,"list":[-0.5,"x"]})");
    EXPECT_EQ(decimal_json::dump(decimal_json::parse<Json>(compact)), compact);
    EXPECT_TRUE(Json::accept(compact));  // standard JSON for every other reader
}

TEST(DecimalJSON, IndentsLikeTheLibrary) {
    const Json document = Json::parse(R"({"a":[1,{"b":null,"c":"é\n"}],"d":{},"e":[]})");
    EXPECT_EQ(decimal_json::dump(document, 2), document.dump(2));
    EXPECT_EQ(decimal_json::dump(document), document.dump());
}

TEST(DecimalJSON, RefusesTextThatIsNotJSON) {
    EXPECT_THROW(decimal_json::parse<Json>("{\"a\": "), decimal_json::MalformedJSONError);
    EXPECT_THROW(decimal_json::parse<Json>("{} {}"), decimal_json::MalformedJSONError);
}

TEST(JSONFields, NameTheFieldThatIsWrong) {
    const Json document = decimal_json::parse<Json>(R"({"bands": [{"seconds": 1.5}]})");
    try {
        json_fields::integer(document["bands"][0]["seconds"], "bands[0].seconds");
        FAIL();
    } catch (const MalformedInputError& error) {
        EXPECT_STREQ(error.what(), "The field \u201Cbands[0].seconds\u201D must be a whole number.");
    }
    EXPECT_EQ(json_fields::integer(decimal_json::parse<Json>("3600.0"), "x"), 3600);
}

}  // namespace
}  // namespace tessel
