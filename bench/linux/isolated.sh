#!/usr/bin/env bash
# isolated.sh PAIRS COMMAND...: runs COMMAND as root with empty state folders and a network of its own,
# which has PAIRS pairs of adapters.
#
# The first adapter has an address to make an id from. The kernel draws those of the others, as it does
# for containers.
set -euo pipefail
pairs=$1
if [[ $2 != inside ]]; then exec unshare --mount --net "$0" "$pairs" inside "${@:2}"; fi

for folder in /var/lib /root; do mount -t tmpfs tmpfs "$folder"; done
mount -t sysfs sysfs /sys # shows the adapters of the new network
for ((pair = 1; pair <= pairs; ++pair)); do
    address=
    ((pair > 1)) || address="address 02:00:00:00:00:01"
    echo "link add pair$pair $address type veth peer name peer$pair"
done | ip -batch -
exec env -i HOME=/root "${@:3}" # no variable leads to the folders of this account
