# What the public headers declare, from clang's syntax tree of a source that includes them, one fact a line:
#   export NAME code|data DECLARATION   what the library exports
#   table CLASS                         a class with a virtual table
#   record NAME    enum NAME TYPE    constant NAME
# Exported are free functions, and of a class what a host can call or override, and all static data. Private functions
# and functions that a header defines are not. $tables: virtual tables and type information are.

def has($kind): [.inner[]?.kind] | any(. == $kind);
def is_exported: has("DLLImportAttr") or has("VisibilityAttr");
def is_ours: .loc.includedFrom.file // "" | test("(^|/)(MemoryManager/\\w+[.]h|PlatformTypes[.]h|probe[.]cpp)$");

def members: foreach .inner[]? as $member ("private";
    if $member.kind == "AccessSpecDecl" then $member.access else . end;
    $member + {access: .});

# A constructor or destructor is one function in the vendor's names, two or three in GNU's: of a whole object, of a
# base, and one that frees the object too.
def names:
    .kind as $kind | .virtual as $virtual | .mangledName
    | if startswith("?") then sub("^[?][?]_D(?<class>.*)XXZ$"; "??1\(.class)@XZ")
      elif $kind == "CXXConstructorDecl" then ., sub("C1E"; "C2E")
      elif $kind == "CXXDestructorDecl" then ., sub("D1E"; "D2E"), (select($virtual) | sub("D1E"; "D0E"))
      else . end;

# "int (long, char *)", CImageObj:: and a name make "int CImageObj::MapList(long, char *)".
def declaration($scope):
    (.type.qualType | sub(" __attribute__\\(\\(\\w+\\)\\)"; "") | capture("^(?<before>[^(\\[]*)(?<after>.*)$")) as $type
    | (if .kind == "CXXConstructorDecl" or .kind == "CXXDestructorDecl" then "" else $type.before | sub(" *$"; " ") end)
        + $scope + .name + $type.after
    | gsub(" (?<star>[*&]+)"; .star) | sub("(?<star>[*&]) ?(?=\\w)"; .star + " ");

def storage: if .virtual then "virtual " elif .storageClass == "static" then "static " else "" end;

def exported_member($scope):
    if .isImplicit or .mangledName == null or has("CompoundStmt") then empty
    elif .kind == "VarDecl" then "export \(.mangledName) data \(storage)\(declaration($scope))"
    elif .access == "private" then empty
    else (storage + declaration($scope)) as $declaration | names | "export \(.) code \($declaration)" end;

def tables($exported):
    "table \(.name)",
    if $exported and $tables then
        .name as $class | {V: "table of", I: "type of", S: "type name of"} | to_entries[]
        | "export _ZT\(.key)\($class | length)\($class) data \(.value) \($class)"
    else empty end;

.inner[] | if .kind == "LinkageSpecDecl" then .inner[] else . end | select(is_ours) |
if .kind == "FunctionDecl" and is_exported then "export \(.mangledName) code \(declaration(""))"
elif .kind == "CXXRecordDecl" and .completeDefinition then
    "record \(.name)",
    (if .definitionData.isPolymorphic then tables(is_exported) else empty end),
    (if is_exported then "\(.name)::" as $scope | members | exported_member($scope) else empty end)
elif .kind == "EnumDecl" then
    "enum \(.name) \(.fixedUnderlyingType | .desugaredQualType // .qualType)",
    (.inner[] | select(.kind == "EnumConstantDecl") | "constant \(.name)")
elif .kind == "VarDecl" and .constexpr then "constant \(.name)"
else empty end
