# Complains of the enumerators and namespaces that have no words in doxygen's XML: doxygen itself does
# not miss them.

function judge() {
    if (!words) {
        gsub(/^ *<[^>]*>|<[^>]*>$/, "", name)
        print name " is not documented"
        missed = 1
    }
}

/<compounddef .*kind="namespace"/ {
    isNamespace = 1
    words = 0
}
/<compoundname>/ { name = $0 }
/<compoundname>std</ { isNamespace = 0 }
# A namespace's own words come after those of its members.
/<\/sectiondef>/ { words = 0 }

/<enumvalue / {
    isValue = 1
    space = name
    words = 0
}
/<name>/ && isValue { name = $0 }
/<para>/ { words = 1 }
/<\/enumvalue>/ {
    judge()
    isValue = 0
    name = space
}

/<\/compounddef>/ {
    if (isNamespace) judge()
    isNamespace = 0
}

END { exit missed }
