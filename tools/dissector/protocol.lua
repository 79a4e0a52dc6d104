-- The GCU private protocol for Wireshark 3.6 to 4.x: host frames and GCU frames over TCP, UDP and
-- in captures of link type USER0. The build joins the parts of this folder after the program's
-- tables.

-- Two copies, the user's and the system's, would be two protocols of one name: the first serves.
do
    local asked, there = pcall(Dissector.get, "nacelle")
    if asked and there then
        return
    end
end

local byte, find, sub, format = string.byte, string.find, string.sub, string.format
local floor, min = math.floor, math.min
local bxor = bit.bxor
-- Fetched once: through an item each call would look its method up anew.
local add, add_le = TreeItem.add, TreeItem.add_le
local append_text = TreeItem.append_text

local proto = Proto("nacelle", "GCU Private Protocol")
local LANGUAGES = { "en", "zh" }
local AREA_AT = 69 -- where the command or the feedback stands
local CRC_SIZE = 2
local ANSWER_SIZE = 73 -- of a frame whose feedback is a code and its result
local USER0 = 45 -- Wireshark's number of the link type
local PORT_TYPE_TCP, PORT_TYPE_UDP = 2, 3

-- The two frames, by their first two bytes.
local HOST_HEADER, GCU_HEADER = "\168\229", "\138\94"
local FRAMES = {
    [HOST_HEADER] = { id = "host", rows = HOST_ROWS, name = { en = "Host", zh = "上位机" } },
    [GCU_HEADER] = { id = "gcu", rows = GCU_ROWS, name = { en = "GCU", zh = "GCU" } },
}
local SMALLEST = 71 -- with an empty area, which the bench can send, too

proto.prefs.language = Pref.enum("Language", 1, "Language of names; filters are the same in both",
    { { 1, "English", 1 }, { 2, "中文", 2 } }, false)
proto.prefs.tcp_ports = Pref.range("TCP ports", "2332", "Ports with nothing else on them",
    65535)
proto.prefs.udp_ports = Pref.range("UDP ports", "2337-2338", "Ports with nothing else on them",
    65535)
proto.prefs.user0 = Pref.bool("Link type USER0", true, "Take captures of link type 147")
proto.prefs.largest = Pref.uint("Largest frame", 257,
    "In bytes. A length above it is an error; a small one finds back into the stream sooner")
