// Attributes of extensions: what is known of them, and values from texts and numbers in their formats.
#include "app.h"
#include "control.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>
#include <string>
#include <string_view>

namespace {

enum class kind { signed_int, unsigned_int, real, text, unknown };

kind kind_of(const char* format) {
    const std::string_view name = format ? format : "";
    return name == "4s1"   ? kind::signed_int
           : name == "4u1" ? kind::unsigned_int
           : name == "4f1" ? kind::real
           : name == "1s0" ? kind::text
                           : kind::unknown;
}

const char* type_name(kind of) {
    constexpr const char* names[] = {"int", "unsigned", "float", "text", ""};
    return names[static_cast<int>(of)];
}

const char* kind_name(kind of) {
    constexpr const char* names[] = {"a whole number", "a whole number from 0", "a number", "a text",
                                     "a value of an unknown format"};
    return names[static_cast<int>(of)];
}

// from_chars takes no plus sign, but people write one.
std::string_view without_plus(std::string_view text) {
    return text.starts_with('+') && !text.starts_with("+-") ? text.substr(1) : text;
}

// What is wrong with the text, or null.
template <class T> const char* read_int(std::string_view text, T& value) {
    text = without_plus(text);
    int base = 10;
    if (std::is_unsigned_v<T> && (text.starts_with("0x") || text.starts_with("0X"))) {
        text.remove_prefix(2);
        base = 16;
    }
    int64_t wide = 0;
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, wide, base);
    if (error == std::errc::invalid_argument || rest != end) return "is not";
    value = static_cast<T>(wide);
    return error == std::errc::result_out_of_range || value != wide ? "is out of range for" : nullptr;
}

const char* read_float(std::string_view text, float& value) {
    text = without_plus(text);
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, value);
    if (error == std::errc::invalid_argument || rest != end) return "is not";
    if (error == std::errc::result_out_of_range) {
        // Too large, or only too small: that is a zero.
        double wide = 0;
        const auto wider = std::from_chars(text.data(), end, wide);
        if (wider.ec != std::errc{} || std::abs(wide) > 1) return "is out of range for";
        value = static_cast<float>(wide);
    }
    return std::isfinite(value) ? nullptr : "is out of range for";
}

struct attribute {
    const renderext_arg* arg;
    kind type;
};

// arg is null, and the reason noted, for an unknown name.
attribute find_attribute(kora_control& control, const char* name) {
    const renderext_arg* arg = control.extension.args;
    while (arg && arg->name && strcmp(arg->name, name ? name : "") != 0)
        ++arg;
    if (arg && arg->name) return {arg, kind_of(arg->format)};
    control.host.fail("%s has no attribute named %s", control.extension.name, name ? name : "(null)");
    return {nullptr, kind::unknown};
}

int give(kora_control& control, const attribute& to, const void* value) {
    if (control.extension.parse)
        control.call([&] { control.extension.parse(to.arg->id, value, &control.instance); });
    return 1;
}

int refuse(kora_control& control, const attribute& to, const char* value, const char* fault) {
    control.host.fail("attribute %s: %s %s %s", to.arg->name, value, fault, kind_name(to.type));
    return 0;
}

constexpr double no_limit = std::numeric_limits<double>::infinity();

// The attributes that kor_renderext_common_parse takes, by id.
constexpr kora_attribute common_attributes[] = {
    {"", "", "pixels", "0", -no_limit, no_limit, nullptr, "left edge of the control", 1},
    {"", "", "pixels", "0", -no_limit, no_limit, nullptr, "top edge of the control", 1},
    {"", "", "pixels", nullptr, 0, no_limit, nullptr, "width of the control", 1},
    {"", "", "pixels", nullptr, 0, no_limit, nullptr, "height of the control", 1},
    {"", "", "0xRRGGBB", "0", 0, no_limit, nullptr, "of flat shapes", 0},
    {"", "", "", "0", 0, no_limit, nullptr, "of flat shapes", 0},
    {"", "", "", "0", 0, no_limit, nullptr, "of flat shapes", 0},
    {"", "", "degrees", "0", -no_limit, no_limit, nullptr, "of flat shapes", 0},
    {"", "", "pixels", "0", 0, no_limit, nullptr, "of flat shapes", 0},
    {"", "", "", "255", 0, 255, nullptr, "opacity of the whole control", 1},
    {"", "", "pixels", "0", -no_limit, no_limit, nullptr, "of flat shapes", 0},
    {"", "", "pixels", "0", -no_limit, no_limit, nullptr, "of flat shapes", 0},
};

const char* unit_name(int32_t unit) {
    switch (unit) {
    case MODEL3D_UNIT_LENGTH:
        return "model units";
    case MODEL3D_UNIT_DEGREES:
        return "degrees";
    case MODEL3D_UNIT_FACTOR:
        return "factor";
    default:
        return "";
    }
}

std::string number_text(float value) {
    char text[32];
    return {text, std::to_chars(text, std::end(text), value).ptr};
}

// What the plug-in of an extension says about one of its attributes, or null.
const model3d_attribute* find_description(const kora_app& app, const char* extension, int32_t id) {
    for (const loaded_plugin& plugin : app.plugins) {
        const model3d_query* const query = plugin.query;
        if (!query || strcmp(query->extension, extension) != 0) continue;
        const model3d_attribute* const end = query->attributes + query->attribute_count;
        const auto* const found =
            std::find_if(query->attributes, end, [id](const auto& row) { return row.id == id; });
        return found == end ? nullptr : found;
    }
    return nullptr;
}

kora_attribute describe(const kora_app& app, attribute_list& list, const renderext_arg& arg) {
    kora_attribute row{"", "", "", nullptr, -no_limit, no_limit, nullptr, "", 1};
    if (arg.id >= 0 && static_cast<size_t>(arg.id) < std::size(common_attributes))
        row = common_attributes[arg.id];
    row.name = arg.name;
    row.type = type_name(kind_of(arg.format));
    const model3d_attribute* const said = find_description(app, list.extension->name, arg.id);
    if (!said) return row;
    row.unit = unit_name(said->unit);
    row.minimum = said->minimum;
    row.maximum = said->maximum;
    row.keywords = said->keywords;
    row.description = said->description;
    if (said->keywords)
        row.initial = said->keywords[static_cast<size_t>(said->initial)];
    else if (kind_of(arg.format) != kind::text)
        row.initial = list.numbers.emplace_back(number_text(said->initial)).c_str();
    return row;
}

// Made when it is asked for.
const attribute_list& list_of(kora_app& app, const renderext_descriptor& extension) {
    for (const attribute_list& list : app.attribute_lists)
        if (list.extension == &extension) return list;
    attribute_list list{&extension, {}, {}};
    for (const renderext_arg* arg = extension.args; arg && arg->name; ++arg)
        list.rows.push_back(describe(app, list, *arg));
    return app.attribute_lists.emplace_back(std::move(list));
}

} // namespace

const kora_attribute* kora_app_attributes(kora_app* app, const char* extension, size_t* count) {
    return attempt<const kora_attribute*>(*app, nullptr, [&]() -> const kora_attribute* {
        const renderext_descriptor* const found = app->find_extension(extension);
        if (!found) return nullptr;
        const attribute_list& list = list_of(*app, *found);
        *count = list.rows.size();
        return list.rows.data();
    });
}

int kora_control_set(kora_control* control, const char* name, const char* value) {
    return attempt(control->host, 0, [&] {
        const attribute to = find_attribute(*control, name);
        if (!to.arg) return 0;
        if (!value) return refuse(*control, to, "nothing", "is not");
        int32_t whole = 0;
        uint32_t natural = 0;
        float real = 0;
        const char* fault = "is not";
        const void* converted = value;
        switch (to.type) {
        case kind::signed_int:
            fault = read_int(value, whole);
            converted = &whole;
            break;
        case kind::unsigned_int:
            fault = read_int(value, natural);
            converted = &natural;
            break;
        case kind::real:
            fault = read_float(value, real);
            converted = &real;
            break;
        case kind::text:
            fault = nullptr;
            if (strcmp(name, "filename") == 0) control->images.use_model(value);
            break;
        case kind::unknown:
            break;
        }
        return fault ? refuse(*control, to, value, fault) : give(*control, to, converted);
    });
}

int kora_control_set_int(kora_control* control, const char* name, int32_t value) {
    return attempt(control->host, 0, [&] {
        const attribute to = find_attribute(*control, name);
        if (!to.arg) return 0;
        const float real = static_cast<float>(value);
        if (to.type == kind::real) return give(*control, to, &real);
        if (to.type == kind::signed_int || (to.type == kind::unsigned_int && value >= 0))
            return give(*control, to, &value);
        return refuse(*control, to, std::to_string(value).c_str(),
                      to.type == kind::unsigned_int ? "is out of range for" : "is not");
    });
}

int kora_control_set_float(kora_control* control, const char* name, float value) {
    return attempt(control->host, 0, [&] {
        const attribute to = find_attribute(*control, name);
        if (!to.arg) return 0;
        if (to.type == kind::real && std::isfinite(value)) return give(*control, to, &value);
        return refuse(*control, to, std::to_string(value).c_str(),
                      to.type == kind::real ? "is out of range for" : "is not");
    });
}
