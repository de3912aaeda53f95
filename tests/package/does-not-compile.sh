#!/bin/sh
# Usage: does-not-compile.sh SOURCE_TREE
# Fails unless $CXX refuses each statement of the checked layer's users that is wrong, gives the reason in the
# first lines of its message, and accepts the statement that is right, which differs only in what is wrong.
set -eu
source=$1
first_lines=8
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# compile STATEMENT
compile() {
    cat > "$work/statement.cpp" << END
#include <tarn/document/Document.hpp>
using namespace tarn::document;
void use(Document& document, Element& element)
{
    $1
}
END
    "$CXX" -std=c++17 -fsyntax-only -I "$source" "$work/statement.cpp" > "$work/message" 2>&1
}

failed=""
while IFS='|' read -r reason wrong right; do
    if compile "$wrong"; then
        echo "$CXX accepts: $wrong"
        failed=yes
    elif ! head -n "$first_lines" "$work/message" | grep -q "$reason"; then
        echo "The message for $wrong does not begin with $reason:"
        cat "$work/message"
        failed=yes
    fi
    compile "$right" || { echo "$CXX refuses: $right"; cat "$work/message"; failed=yes; }
# A part of the message | what is refused | the same, corrected
done << 'END'
theNameIsNotAnNcName|constexpr Name NAME{"2nd"};|constexpr Name NAME{"second"};
theNameIsNotAnNcName|constexpr Name NAME{XML, "a:b"};|constexpr Name NAME{XML, "a-b"};
theNamespaceNameOrThePrefixIsNotAllowed|constexpr Namespace SPACE{"a b"};|constexpr Namespace SPACE{"a-b"};
theNamespaceNameOrThePrefixIsNotAllowed|constexpr Namespace SPACE{"a", "2"};|constexpr Namespace SPACE{"a", "b"};
a single character is no text|element.text('a');|element.text("a");
a single character is no text|element.text(L'a');|element.text(u"a");
deleted|element.text(L"a");|element.text(u"a");
deleted|element.text(static_cast<const int*>(nullptr));|element.text(static_cast<const char*>(nullptr));
deleted|element.text(nullptr);|element.text("");
deleted|Document other(nullptr);|Document other([](std::string_view) {});
deleted|Document other(document);|Document& other(document);
deleted|Element other(element);|Element other(std::move(element));
deleted|element = element;|element = std::move(element);
END
[ -z "$failed" ]
