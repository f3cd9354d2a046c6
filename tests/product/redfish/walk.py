#!/usr/bin/python3
"""Walks a service with python3-sushy: walk.py URL NAME PASSWORD

Prints what it sees as JSON: the system, and of each storage its drives and volumes.
"""
import json
import logging
import sys
import warnings

warnings.simplefilter("ignore")
import sushy  # noqa: E402

logging.disable(logging.CRITICAL)


def word(value):
    return None if value is None else value.value if hasattr(value, "value") else value


def volumes_of(each):
    try:
        return [volume.identity for volume in each.volumes]
    except sushy.exceptions.MissingAttributeError:  # How it takes an empty list.
        return []


def drive(each):
    return {"name": each.name, "model": each.model, "serial": each.serial_number, "bytes": each.capacity_bytes,
            "protocol": word(each.protocol), "health": word(each.status.health),
            "volumes": volumes_of(each)}


def volume(each):
    return {"id": each.identity, "raid": word(each.raid_type), "bytes": each.capacity_bytes,
            "health": each.json["Status"]["Health"]}


def main(url, name, password):
    root = sushy.Sushy(url + "/redfish/v1/", auth=sushy.auth.SessionAuth(name, password))
    system = root.get_system()
    print(json.dumps({
        "host": system.hostname, "health": word(system.status.health),
        "chassis": [word(each.chassis_type) for each in root.get_chassis_collection().get_members()],
        "events": root.get_event_service().identity,
        "storage": [{"id": each.identity,
                     "controllers": [one.name for one in each.controllers.get_members()],
                     "drives": [drive(one) for one in each.drives],
                     "volumes": [volume(one) for one in each.volumes.get_members()]}
                    for each in system.storage.get_members()]}))
    root._auth.close()


main(*sys.argv[1:])
