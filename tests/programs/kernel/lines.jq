# Routes and interfaces as one line of text each, by rules of their own, from what iproute2 prints as JSON: an array of
# `ip -j -d addr` and `ip -j -d -4 route show table all` and `-6`. It tells "dst" twice of a route with an encapsulation,
# whose own one is expected under "to".
. as [$addresses, $routes4, $routes6] |

def vrfs: {main: "default", local: "default"} + ([$addresses[] | select(.linkinfo.info_kind == "vrf")
   | {(.linkinfo.info_data.table | tostring): .ifname}] | add // {});

def is_drop: .type | IN("blackhole", "unreachable", "prohibit");

def prefix($six):
   if .dst == "default" then (if $six then "::/0" else "0.0.0.0/0" end)
   elif .dst | contains("/") then .dst
   else "\(.dst)/\(if $six then 128 else 32 end)" end;

def address: . // "" | if IN("any", "0.0.0.0", "::") then "" else . end;

def dotted: split(".") | map(tonumber) | reduce .[] as $byte (0; . * 256 + $byte);

# The kind of outer header that a link adds; null for one that adds none.
def outer_header:
   {gre: "gre", gretap: "gre", ip6gre: "gre", ip6gretap: "gre", ipip: "ipInIp", sit: "ipInIp", ip6tnl: "ipInIp",
    vxlan: "vxlan"}[.linkinfo.info_kind // ""];

# One label is the via's own; more, and outer headers, are those of a tunnel.
def encapsulation:
   if .encap == "mpls" then .to | split("/") | if length == 1 then " label \(.[0])" else " push \(join(" "))" end
   elif .encap | IN("ip", "ip6") then
      (.dev as $dev | [$addresses[] | select(.ifname == $dev) | outer_header // empty] | .[0] // "ipInIp") as $header
      | " \($header) \(.src | address) > \(.to) key \(.id)"
      + " ttl \(.ttl // .hoplimit) tos \(.tos // .tc)"
   else "" end;

def device_tunnel:
   outer_header as $type | .linkinfo.info_data
   | (.remote // .remote6 // .group // .group6 | address) as $remote
   | if $type and $remote != "" then
        " tunnel \($type) \(.local // .local6 | address) > \($remote) key \(.id // (.okey // "0" | dotted))"
        + " ttl \(.ttl // .hoplimit) tos 0"
     else "" end;

def hops:
   (.nexthops // [.]) | map(select(.flags | index("dead") | not)) | length as $count | map(
      " via \(.via.host // .gateway // (if .encap | IN("ip", "ip6") then .to else "" end)) \(.dev) weight \(if $count == 1 then 1 else .weight // 1 end)"
      + encapsulation) | add // "";

# Route type in IPv4 and IPv6, and preference.
def kinds: {
   local: [1, 1, 0], anycast: [1, 1, 0], broadcast: [3, 1, 0], connected: [11, 7, 0], boot: [7, 4, 1], static: [7, 4, 1],
   keepalived: [7, 4, 1], dhcp: [35, 22, 254], bgp: [25, 12, 200], ospf: [15, 11, 110], isis: [27, 19, 115],
   rip: [10, 6, 120], other: [9, 5, 254]};

def kind($six):
   (if .type | IN("local", "anycast", "broadcast") then .type
    elif .type == "unicast" and .protocol == "kernel" and (.gateway // .via // .nexthops) == null then "connected"
    else .protocol end) as $name
   | (kinds[$name] // kinds.other) as [$type4, $type6, $preference]
   | if is_drop then (if $six then 21 else 29 end) elif $six then $type6 else $type4 end
   | " type \(.) [\($preference)/";

# What the kernel uses of the routes to one prefix; IPv6 ones that are alike in all but their hops are one route.
def routes($six):
   vrfs as $vrfs
   | map(select($vrfs[.table] and (.type | IN("throw", "multicast") | not) and (has("from") | not))
      | .line = "\($vrfs[.table]) \(prefix($six))" + kind($six) + "\(.metric // 0)]"
      | .place = [$vrfs[.table], prefix($six)] | .rank = [.table != "local", .tos // "", .metric // 0]
      | .ways = if is_drop then "" else hops end | select(is_drop or .ways != ""))
   | group_by(.place)[] | sort_by(.rank) | .[0] as $best
   | if $six then map(select(.rank == $best.rank and .line == $best.line)) else [$best] end
   | $best.line + (map(.ways) | add);

def interfaces:
   [vrfs[]] as $vrfs | $addresses[] | .ifname as $name
   | (if $vrfs | index($name) then $name else .master end) as $own | ($vrfs | index($own)) as $in_vrf
   | "\($name) vrf \(if $in_vrf then $own else "default" end)"
   + if (.flags | index("LOOPBACK")) or $own == $name then " loopback" else "" end
   + if (.flags | index("UP")) and (.operstate | IN("UP", "UNKNOWN")) then " up" else "" end
   + ([.addr_info[] | select(.scope != "host") | " \(.local)/\(.prefixlen)"] | add // "") + device_tunnel;

interfaces, ($routes4 | routes(false)), ($routes6 // [] | routes(true))
