// util-db: the command-line tool's machinery. One declarative table of the
// exported table functions (tools/functions.cpp) is turned into parsers,
// callers and printers by the templates here.
#pragma once

#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "util-database.h"

namespace cli {

// ---- A small output model, printed as text or as JSON ----

struct Value {
    enum Kind { Null, Int, Str, Object, Array } kind = Null;
    long long i = 0;
    std::string s;
    std::vector<std::pair<std::string, Value>> fields;  // Object
    std::vector<Value> items;                           // Array

    static Value null() { return Value(); }
    static Value integer(long long v) {
        Value x;
        x.kind = Int;
        x.i = v;
        return x;
    }
    static Value string(const char* v) {
        if (v == nullptr) {
            return null();
        }
        Value x;
        x.kind = Str;
        x.s = v;
        return x;
    }
    // A fixed character field: up to `size` characters, terminated or not.
    static Value chars(const char* v, size_t size) {
        Value x;
        x.kind = Str;
        x.s.assign(v, strnlen(v, size));
        return x;
    }
    static Value object() {
        Value x;
        x.kind = Object;
        return x;
    }
    static Value array() {
        Value x;
        x.kind = Array;
        return x;
    }
    Value& add(const std::string& key, Value v) {
        fields.emplace_back(key, std::move(v));
        return *this;
    }
};

std::string to_json(const Value& v);
std::string to_text(const Value& v, int indent = 0);

// ---- One call: its arguments and what it produced ----

struct Call {
    db_handle_t* handle = nullptr;
    std::vector<std::string> args;  // after the function name
    size_t next = 0;                // the next argument to consume
    std::string error;              // a bad argument: the message
    Value outputs = Value::object();
    long long result_int = 0;       // the int result, for array outputs

    bool fail(const std::string& message) {
        if (error.empty()) {
            error = message;
        }
        return false;
    }
};

// A parameter as the table names it. Roles: "name" is an input, "name!" a
// caller buffer the function fills (given as its size, or "-" for 4096 bytes).
struct Param {
    std::string name;
    bool out = false;
    explicit Param(const char* text) : name(text) {
        if (!name.empty() && name.back() == '!') {
            out = true;
            name.pop_back();
        }
    }
};

bool parse_int(const std::string& text, int* value);

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
        switch (f.kind) {
            case Field::Int:
                v.add(f.name, Value::integer(*reinterpret_cast<const int*>(base + f.offset)));
                break;
            case Field::Str:
                v.add(f.name, Value::string(*reinterpret_cast<char* const*>(base + f.offset)));
                break;
            case Field::Chars:
                v.add(f.name, Value::chars(base + f.offset, f.size));
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
        const Field* found = nullptr;
        for (const Field& f : Record<T>::fields()) {
            if (key == f.name) {
                found = &f;
            }
        }
        if (found == nullptr) {
            std::string names;
            for (const Field& f : Record<T>::fields()) {
                names += std::string(names.empty() ? "" : ", ") + f.name;
            }
            return call.fail("unknown field '" + key + "' (fields: " + names + ")");
        }
        switch (found->kind) {
            case Field::Int:
                if (!parse_int(val, reinterpret_cast<int*>(base + found->offset))) {
                    return call.fail("field " + key + ": not an integer: '" + val + "'");
                }
                break;
            case Field::Str:
                if (val == "-") {
                    *reinterpret_cast<char**>(base + found->offset) = nullptr;
                } else {
                    keep.push_back(std::make_unique<std::string>(val));
                    *reinterpret_cast<char**>(base + found->offset) = &(*keep.back())[0];
                }
                break;
            case Field::Chars:
                strncpy(base + found->offset, val.c_str(), found->size);
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
        if (call.next >= call.args.size()) {
            return call.fail("missing argument '" + p.name + "'");
        }
        const std::string& a = call.args[call.next++];
        if (!parse_int(a, &v)) {
            return call.fail(p.name + ": not an integer: '" + a + "'");
        }
        return true;
    }
    int get() { return v; }
    void report(const Param&, Call&) {}
};

// Strings: "-" is NULL. Output buffers: "-" or a size.
template <typename C>
struct Arg<C*, std::enable_if_t<std::is_same_v<std::remove_const_t<C>, char>>> {
    std::string text;
    std::vector<char> buffer;
    bool null = false;
    bool out = false;
    static std::string type() { return std::is_const_v<C> ? "const char*" : "char*"; }
    bool parse(const Param& p, Call& call) {
        if (call.next >= call.args.size()) {
            return call.fail("missing argument '" + p.name + "'");
        }
        const std::string& a = call.args[call.next++];
        out = p.out;
        if (out) {
            int size = 4096;
            if (a != "-" && (!parse_int(a, &size) || size <= 0)) {
                return call.fail(p.name + ": a buffer is given as '-' or its size in bytes, not '" + a + "'");
            }
            buffer.assign(static_cast<size_t>(size) + 1, '\0');  // one byte more: always printable
            return true;
        }
        null = a == "-";
        text = a;
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
            call.outputs.add(p.name, Value::string(buffer.data()));
        }
    }
};

// A record passed in (and, for non-const ones, filled): its fields as field=value.
template <typename T>
struct Arg<T*, std::enable_if_t<std::is_class_v<std::remove_const_t<T>> &&
                                !std::is_same_v<std::remove_const_t<T>, db_handle_t>>> {
    using Rec = std::remove_const_t<T>;
    Rec rec;
    std::vector<std::unique_ptr<std::string>> keep;
    static std::string type() { return std::string(Record<Rec>::name()) + (std::is_const_v<T> ? " (in)" : ""); }
    bool parse(const Param& p, Call& call) {
        if (Record<Rec>::is_array) {  // a caller array the function fills
            (void)p;
            items.assign(Record<Rec>::capacity, Rec{});
            return true;
        }
        return record_parse(&rec, call, keep);
    }
    T* get() { return Record<Rec>::is_array ? items.data() : &rec; }
    void report(const Param& p, Call& call) {
        if (Record<Rec>::is_array) {
            Value arr = Value::array();
            for (long long i = 0; i < call.result_int && i < static_cast<long long>(items.size()); ++i) {
                arr.items.push_back(record_value(items[static_cast<size_t>(i)]));
            }
            call.outputs.add(p.name, arr);
        } else if (!std::is_const_v<T>) {
            call.outputs.add(p.name, record_value(rec));
        }
    }
    std::vector<Rec> items;
};

// An array handed over through a pointer: result elements, freed afterwards.
template <typename T>
struct Arg<T**, std::enable_if_t<std::is_class_v<T>>> {
    T* array = nullptr;
    db_handle_t* handle = nullptr;
    static std::string type() { return std::string(Record<T>::name()) + "** (out)"; }
    bool parse(const Param&, Call& call) {
        handle = call.handle;
        return true;
    }
    T** get() { return &array; }
    void report(const Param& p, Call& call) {
        Value arr = Value::array();
        if (array != nullptr) {
            for (long long i = 0; i < call.result_int; ++i) {
                arr.items.push_back(record_value(array[i]));
            }
            Record<T>::free_array(handle, array);
        }
        call.outputs.add(p.name, arr);
    }
};

// ---- Results by type ----

template <typename R, typename Enable = void>
struct Ret;

template <>
struct Ret<int> {
    static std::string type() { return "int"; }
    static Value value(int r, Call& call) {
        call.result_int = r;
        return Value::integer(r);
    }
};

template <typename C>
struct Ret<C*, std::enable_if_t<std::is_same_v<std::remove_const_t<C>, char>>> {
    static std::string type() { return "char*"; }
    static Value value(C* r, Call&) { return Value::string(r); }
};

// A heap list: every node, then freed with its free function.
template <typename T>
struct Ret<T*, std::enable_if_t<std::is_class_v<T>>> {
    static std::string type() { return std::string(Record<T>::name()) + "* (list)"; }
    static Value value(T* r, Call&) {
        if (r == nullptr) {
            return Value::null();
        }
        Value arr = Value::array();
        for (T* n = r; n != nullptr; n = n->next) {
            arr.items.push_back(record_value(*n));
        }
        Record<T>::free_list(r);
        return arr;
    }
};

// ---- The table ----

struct Entry {
    std::string name;
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
            return Value::null();
        }
        if (call.next < call.args.size()) {
            call.fail("too many arguments (" + std::to_string(call.args.size()) + " given)");
            return Value::null();
        }
        Fn fn = reinterpret_cast<Fn>(e.fn);
        Value result = Ret<R>::value(fn(call.handle, std::get<I>(args).get()...), call);
        (std::get<I>(args).report(e.params[I], call), ...);
        return result;
    }

    static Value invoke(const Entry& e, Call& call) { return run(e, call, std::index_sequence_for<A...>{}); }
};

template <typename R, typename... A>
Entry entry(const char* name, R (*fn)(db_handle_t*, A...), std::vector<const char*> names) {
    Entry e;
    e.name = name;
    e.fn = reinterpret_cast<void*>(fn);
    e.invoke = &Invoker<R, A...>::invoke;
    for (const char* n : names) {
        e.params.emplace_back(n);
    }
    const std::vector<std::string> types = {Arg<A>::type()...};
    std::string sig = Ret<R>::type() + " " + name + "(";
    for (size_t i = 0; i < types.size(); ++i) {
        const std::string pname = i < e.params.size() ? e.params[i].name : "?";
        sig += (i ? ", " : "") + types[i] + " " + pname + (i < e.params.size() && e.params[i].out ? " (out)" : "");
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
