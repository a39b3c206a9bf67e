# Group Policy templates for the configuration: jq -r --arg want admx|adml -f installer/policy.jq docs/schema/configuration.json
# Every key is a policy of its own, but for the secret, which all may read there, and what is for labs only. A value that
# is set there goes before the file's.

def xml: gsub("&"; "&amp;") | gsub("<"; "&lt;") | gsub(">"; "&gt;") | gsub("\""; "&quot;");
def kind:
  if .enum then "enum"
  elif .type == "integer" then (if .maximum > 4294967295 then "longDecimal" else "decimal" end)
  elif .type == "array" then "multiText"
  elif .type == "boolean" then "flag"
  else "text" end;
def keys_: .properties | to_entries
  | map(select(.key | IN("$schema", "sessionToken", "retryWaitScale") | not) | .value + {key, kind: (.value | kind)});

def element:
  "id=\"\(.key)_value\" valueName=\"\(.key)\"" as $names
  | if .kind == "flag" then
      "      <enabledValue><decimal value=\"1\" /></enabledValue>\n      <disabledValue><decimal value=\"0\" /></disabledValue>"
    elif .kind == "enum" then
      .key as $key
      | "      <elements>\n        <enum \($names) required=\"true\">\n"
        + (.enum | map("          <item displayName=\"$(string.\($key)_\(.))\"><value><string>\(.)</string></value></item>\n") | add)
        + "        </enum>\n      </elements>"
    else
      (if .minimum then " minValue=\"\(.minimum)\" maxValue=\"\(.maximum)\"" else "" end) as $range
      | "      <elements>\n        <\(.kind) \($names) required=\"true\"\($range) />\n      </elements>"
    end;

def policy:
  (if .kind == "flag" then " valueName=\"\(.key)\"" else " presentation=\"$(presentation.\(.key))\"" end) as $more
  | "    <policy name=\"\(.key)\" class=\"Machine\" displayName=\"$(string.\(.key))\" explainText=\"$(string.\(.key)_explain)\""
    + " key=\"Software\\Policies\\Tolmar\"\($more)>\n"
    + "      <parentCategory ref=\"Tolmar\" />\n      <supportedOn ref=\"Supported\" />\n\(element)\n    </policy>";

def said: [
  .description // "",
  (if .kind == "flag" then "Enabled: true. Disabled: false." else empty end),
  (if .minimum then "From \(.minimum) to \(.maximum)." else empty end),
  (if .default != null then "Without it: \(.default | if type == "array" then "none" else tostring end)." else empty end),
  "Key \"\(.key)\" of the configuration; it goes before the file's."
  ] | map(select(. != "") | sub("(?<end>[^.])$"; "\(.end).")) | join(" ") | xml;

def strings:
  "      <string id=\"\(.key)\">\(.key)</string>\n      <string id=\"\(.key)_explain\">\(said)</string>",
  (select(.enum) | .key as $key | .enum[] | "      <string id=\"\($key)_\(.)\">\(.)</string>");

def box:
  {enum: "dropdownList", decimal: "decimalTextBox", longDecimal: "longDecimalTextBox", multiText: "multiTextBox", text: "textBox"}[.kind] as $box
  | "      <presentation id=\"\(.key)\">"
    + (if .kind == "text" then "<textBox refId=\"\(.key)_value\"><label>\(.key)</label></textBox>"
       else (if .kind | IN("decimal", "longDecimal") then (if .default != null then " defaultValue=\"\(.default)\"" else "" end)
             elif .kind == "enum" then " noSort=\"true\" defaultItem=\"0\"" else "" end) as $more
         | "<\($box) refId=\"\(.key)_value\"\($more)>\(.key)</\($box)>" end)
    + "</presentation>";

def head($root):
  "<?xml version=\"1.0\" encoding=\"utf-8\"?>",
  "<\($root) xmlns=\"http://schemas.microsoft.com/GroupPolicy/2006/07/PolicyDefinitions\" revision=\"1.0\" schemaVersion=\"1.0\">";

if $want == "admx" then
  head("policyDefinitions"),
  "  <policyNamespaces><target prefix=\"tolmar\" namespace=\"Tolmar.Policies\" /></policyNamespaces>",
  "  <resources minRequiredRevision=\"1.0\" />",
  "  <supportedOn><definitions><definition name=\"Supported\" displayName=\"$(string.Supported)\" /></definitions></supportedOn>",
  "  <categories><category name=\"Tolmar\" displayName=\"$(string.Tolmar)\" /></categories>",
  "  <policies>", (keys_[] | policy), "  </policies>", "</policyDefinitions>"
else
  head("policyDefinitionResources"),
  "  <displayName>Tolmar Host</displayName>", "  <description>Configuration of the host</description>",
  "  <resources>", "    <stringTable>",
  "      <string id=\"Tolmar\">Tolmar Host</string>", "      <string id=\"Supported\">Windows 10, Windows Server 2016 or later</string>",
  (keys_[] | strings), "    </stringTable>",
  "    <presentationTable>", (keys_[] | select(.kind != "flag") | box), "    </presentationTable>",
  "  </resources>", "</policyDefinitionResources>"
end
