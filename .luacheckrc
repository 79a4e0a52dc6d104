-- For scripts/lint.sh: what Wireshark gives to a dissector.
std = "lua52"
max_line_length = false -- of the tables; a part keeps to 110 by .editorconfig
read_globals = { "Dissector", "DissectorTable", "NSTime", "Pref", "Proto", "ProtoExpert", "ProtoField", "TreeItem", "TvbRange", "base",
    "bit", "expert", "frametype", "DESEGMENT_ONE_MORE_SEGMENT" }
