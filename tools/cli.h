// util-db: the command-line tool's machinery. One declarative table of the
// exported table functions (tools/functions.cpp) is turned into parsers,
// callers and printers by the templates here.
#pragma once

#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "util-database.h"

namespace cli {

// Results and outputs keep the order in which they were added.
using Value = nlohmann::ordered_json;

// A caller buffer is never smaller than this: the longest text a single cell
// of the reference schema can hold (TEXT), with its terminator.
constexpr size_t kMinBuffer = 65536;

// A decimal integer within [lo, hi]: optional '-', then digits only.
bool parse_decimal(const std::string& text, long long lo, long long hi, long long* value);
bool parse_int(const std::string& text, int* value);

// The number of rows of one table, through the tool's connection (sizing
// caller arrays); -1 when it cannot be read.
long long count_rows(db_handle_t* handle, const char* table);

// ---- One call: its arguments and what it produced ----

struct Call {
    db_handle_t* handle = nullptr;
    std::vector<std::string> args;  // after the function name
    size_t next = 0;                // the next argument to consume
    std::string error;              // a bad argument: the message
    Value outputs = Value::object();
    long long result_int = 0;       // the int result, for array outputs
    bool failed = false;            // the result is the function's failure value
    size_t last_buffer = 0;         // size named for the latest caller buffer

    bool fail(const std::string& message) {
        if (error.empty()) {
            error = message;
        }
        return false;
    }
    const std::string* take(const std::string& name) {
        if (next >= args.size()) {
            fail("missing argument '" + name + "'");
            return nullptr;
        }
        return &args[next++];
    }
};

// A parameter as the table names it: "name" is an input, "name!" a caller
// buffer the function fills (given as its size, or "-"), "name<" the length
// bound of the buffer before it (at most that buffer's size).
struct Param {
    std::string name;
    bool out = false;
    bool bound = false;
    explicit Param(const char* text) : name(text) {
        if (!name.empty() && (name.back() == '!' || name.back() == '<')) {
            out = name.back() == '!';
            bound = name.back() == '<';
            name.pop_back();
        }
    }
};

// ---- Records: their fields, by name ----

struct Field {
    const char* name;
    enum Kind { Int, Str, Chars } kind;
    size_t offset;
    size_t size;  // Chars: the field's capacity
};

template <typename T>
struct Record;  // specialised per record type: fields(), and for lists/arrays free functions

template <typename T>
Value record_value(const T& rec) {
    Value v = Value::object();
    const char* base = reinterpret_cast<const char*>(&rec);
    for (const Field& f : Record<T>::fields()) {
        const char* at = base + f.offset;
        switch (f.kind) {
            case Field::Int:
                v[f.name] = *reinterpret_cast<const int*>(at);
                break;
            case Field::Str: {
                const char* s = *reinterpret_cast<char* const*>(at);
                v[f.name] = s ? Value(s) : Value(nullptr);
                break;
            }
            case Field::Chars:
                v[f.name] = std::string(at, strnlen(at, f.size));
                break;
        }
    }
    return v;
}

// Fills a zeroed record from the remaining "field=value" arguments.
template <typename T>
bool record_parse(T* rec, Call& call, std::vector<std::unique_ptr<std::string>>& keep) {
    memset(rec, 0, sizeof *rec);
    char* base = reinterpret_cast<char*>(rec);
    for (; call.next < call.args.size(); ++call.next) {
        const std::string& a = call.args[call.next];
        const size_t eq = a.find('=');
        if (eq == std::string::npos) {
            return call.fail("expected field=value, got '" + a + "'");
        }
        const std::string key = a.substr(0, eq);
        const std::string val = a.substr(eq + 1);
        const auto& fields = Record<T>::fields();
        const auto found = std::find_if(fields.begin(), fields.end(), [&](const Field& f) { return key == f.name; });
        if (found == fields.end()) {
            std::string names;
            for (const Field& f : fields) {
                names += std::string(names.empty() ? "" : ", ") + f.name;
            }
            return call.fail("unknown field '" + key + "' (fields: " + names + ")");
        }
        char* at = base + found->offset;
        switch (found->kind) {
            case Field::Int:
                if (!parse_int(val, reinterpret_cast<int*>(at))) {
                    return call.fail("field " + key + ": not a decimal integer in range: '" + val + "'");
                }
                break;
            case Field::Str:
                if (val == "-") {
                    *reinterpret_cast<char**>(at) = nullptr;
                } else {
                    keep.push_back(std::make_unique<std::string>(val));
                    *reinterpret_cast<char**>(at) = &(*keep.back())[0];
                }
                break;
            case Field::Chars:
                if (val.size() > found->size) {
                    return call.fail("field " + key + ": " + std::to_string(val.size()) + " characters, the field holds " +
                                     std::to_string(found->size));
                }
                memcpy(at, val.data(), val.size());
                break;
        }
    }
    return true;
}

// ---- Arguments by type ----

template <typename T, typename Enable = void>
struct Arg;

template <>
struct Arg<int> {
    int v = 0;
    static std::string type() { return "int"; }
    bool parse(const Param& p, Call& call) {
        const std::string* a = call.take(p.name);
        if (a == nullptr) {
            return false;
        }
        if (!parse_int(*a, &v)) {
            return call.fail(p.name + ": not a decimal integer in range: '" + *a + "'");
        }
        if (p.bound && v > static_cast<long long>(call.last_buffer)) {
            return call.fail(p.name + ": " + *a + " is more than the buffer's " + std::to_string(call.last_buffer) +
                             " bytes");
        }
        return true;
    }
    int get() { return v; }
    void report(const Param&, Call&) {}
};

// Strings: "-" is NULL. Caller buffers: "-" (4096) or a size; the buffer is
// never smaller than kMinBuffer, so an unbounded copy cannot pass its end.
template <typename C>
struct Arg<C*, std::enable_if_t<std::is_same_v<std::remove_const_t<C>, char>>> {
    std::string text;
    std::vector<char> buffer;
    bool null = false;
    bool out = false;
    static std::string type() { return std::is_const_v<C> ? "const char*" : "char*"; }
    bool parse(const Param& p, Call& call) {
        const std::string* a = call.take(p.name);
        if (a == nullptr) {
            return false;
        }
        out = p.out;
        if (out) {
            long long size = 4096;
            if (*a != "-" && !parse_decimal(*a, 1, 1 << 24, &size)) {
                return call.fail(p.name + ": a buffer is given as '-' or its size in bytes (1 to 16777216), not '" + *a +
                                 "'");
            }
            call.last_buffer = static_cast<size_t>(size);
            buffer.assign(std::max(static_cast<size_t>(size), kMinBuffer) + 1, '\0');
            return true;
        }
        null = *a == "-";
        text = *a;
        return true;
    }
    C* get() {
        if (out) {
            return buffer.data();
        }
        return null ? nullptr : &text[0];
    }
    void report(const Param& p, Call& call) {
        if (out) {
            call.outputs[p.name] = std::string(buffer.data());
        }
    }
};

// A record passed in (and, for non-const ones, filled): its fields as
// field=value. Array records are a caller array the function fills.
template <typename T>
struct Arg<T*, std::enable_if_t<std::is_class_v<std::remove_const_t<T>> &&
                                !std::is_same_v<std::remove_const_t<T>, db_handle_t>>> {
    using Rec = std::remove_const_t<T>;
    Rec rec;
    std::vector<Rec> items;
    std::vector<std::unique_ptr<std::string>> keep;
    static std::string type() { return std::string(Record<Rec>::name()) + (std::is_const_v<T> ? " (in)" : ""); }
    bool parse(const Param& p, Call& call) {
        if constexpr (Record<Rec>::is_array) {
            const std::string* a = call.take(p.name);
            if (a == nullptr) {
                return false;
            }
            if (*a != "-") {
                return call.fail(p.name + ": an output array, given as '-'");
            }
            const long long n = Record<Rec>::capacity(call.handle);
            if (n < 0) {
                return call.fail(p.name + ": cannot size the array");
            }
            items.assign(static_cast<size_t>(n) + 1, Rec{});
            return true;
        } else {
            return record_parse(&rec, call, keep);
        }
    }
    T* get() { return Record<Rec>::is_array ? items.data() : &rec; }
    void report(const Param& p, Call& call) {
        if (Record<Rec>::is_array) {
            Value arr = Value::array();
            for (long long i = 0; i < call.result_int && i < static_cast<long long>(items.size()); ++i) {
                arr.push_back(record_value(items[static_cast<size_t>(i)]));
            }
            call.outputs[p.name] = arr;
        } else if (!std::is_const_v<T>) {
            call.outputs[p.name] = record_value(rec);
        }
    }
};

// An array handed over through a pointer: given as '-', shown as an output,
// freed afterwards.
template <typename T>
struct Arg<T**, std::enable_if_t<std::is_class_v<T>>> {
    T* array = nullptr;
    db_handle_t* handle = nullptr;
    static std::string type() { return std::string(Record<T>::name()) + "**"; }
    bool parse(const Param& p, Call& call) {
        handle = call.handle;
        const std::string* a = call.take(p.name);
        if (a != nullptr && *a != "-") {
            return call.fail(p.name + ": an output array, given as '-'");
        }
        return a != nullptr;
    }
    T** get() { return &array; }
    void report(const Param& p, Call& call) {
        Value arr = Value::array();
        if (array != nullptr) {
            for (long long i = 0; i < call.result_int; ++i) {
                arr.push_back(record_value(array[i]));
            }
            Record<T>::free_array(handle, array);
        }
        call.outputs[p.name] = arr;
    }
};

// ---- Results by type: the value, and whether it is the failure value ----

template <typename R, typename Enable = void>
struct Ret;

template <>
struct Ret<int> {
    static std::string type() { return "int"; }
    static Value value(int r, Call& call) {
        call.result_int = r;
        call.failed = r == -1;
        return r;
    }
};

template <typename C>
struct Ret<C*, std::enable_if_t<std::is_same_v<std::remove_const_t<C>, char>>> {
    static std::string type() { return "char*"; }
    static Value value(C* r, Call& call) {
        call.failed = r == nullptr;
        return r ? Value(r) : Value(nullptr);
    }
};

// A heap list: every node, then freed with its free function.
template <typename T>
struct Ret<T*, std::enable_if_t<std::is_class_v<T>>> {
    static std::string type() { return std::string(Record<T>::name()) + "* (list)"; }
    static Value value(T* r, Call& call) {
        call.failed = r == nullptr;
        if (r == nullptr) {
            return nullptr;
        }
        Value arr = Value::array();
        for (T* n = r; n != nullptr; n = n->next) {
            arr.push_back(record_value(*n));
        }
        Record<T>::free_list(r);
        return arr;
    }
};

// ---- The table ----

struct Entry {
    std::string name;
    std::string description;
    std::string signature;
    Value (*invoke)(const Entry&, Call&);
    void* fn;
    std::vector<Param> params;
};

template <typename R, typename... A>
struct Invoker {
    using Fn = R (*)(db_handle_t*, A...);

    template <size_t... I>
    static Value run(const Entry& e, Call& call, std::index_sequence<I...>) {
        std::tuple<Arg<A>...> args;
        bool ok = true;
        ((ok = ok && std::get<I>(args).parse(e.params[I], call)), ...);
        if (!ok) {
            return nullptr;
        }
        if (call.next < call.args.size()) {
            call.fail("too many arguments (" + std::to_string(call.args.size()) + " given)");
            return nullptr;
        }
        Fn fn = reinterpret_cast<Fn>(e.fn);
        Value result = Ret<R>::value(fn(call.handle, std::get<I>(args).get()...), call);
        (std::get<I>(args).report(e.params[I], call), ...);
        return result;
    }

    static Value invoke(const Entry& e, Call& call) { return run(e, call, std::index_sequence_for<A...>{}); }
};

// T** parameters and caller arrays: outputs given as '-'.
template <typename A>
constexpr bool is_out_array() {
    using P = std::remove_cv_t<std::remove_pointer_t<A>>;
    if constexpr (std::is_pointer_v<P>) {
        return true;
    } else if constexpr (std::is_class_v<P> && !std::is_same_v<P, db_handle_t>) {
        return Record<P>::is_array;
    } else {
        return false;
    }
}

// The signature as `list` shows it: every parameter takes one word on the
// command line ("(out)": given as '-' or a buffer size), except a record,
// which takes the remaining field=value words.
template <typename R, typename... A>
Entry entry(const char* name, R (*fn)(db_handle_t*, A...), const char* description, std::vector<const char*> names) {
    Entry e;
    e.name = name;
    e.description = description;
    e.fn = reinterpret_cast<void*>(fn);
    e.invoke = &Invoker<R, A...>::invoke;
    for (const char* n : names) {
        e.params.emplace_back(n);
    }
    const std::vector<std::string> types = {Arg<A>::type()...};
    const std::vector<bool> outs = {is_out_array<A>()...};
    std::string sig = Ret<R>::type() + " " + name + "(";
    for (size_t i = 0; i < types.size(); ++i) {
        const bool named = i < e.params.size();
        const bool out = named && (e.params[i].out || outs[i]);
        sig += (i ? ", " : "") + types[i] + " " + (named ? e.params[i].name : "?") + (out ? " (out)" : "");
    }
    e.signature = sig + ")";
    if (e.params.size() != sizeof...(A)) {
        e.signature += "  [table error: parameter names]";
    }
    return e;
}

// The declarative table (tools/functions.cpp).
const std::vector<Entry>& functions();

}  // namespace cli
