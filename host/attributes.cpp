// Attribute values from texts and numbers, in the formats that extensions name in their tables.
#include "app.h"
#include "control.h"

#include <charconv>
#include <cmath>
#include <cstring>
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

} // namespace

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
