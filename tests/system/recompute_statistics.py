"""Compares what "quobrix-cli statistics --format json" says with a computation of its own.

recompute_statistics.py STATISTICS DUMP...: DUMPs are what "quobrix-sim dump" says of the loggers that were counted.
Times are UTC. Exits with 1, and a line for each figure that differs.
"""
import json
import math
import sys
import time

STANDSTILL = 0
EVENTS = {'hardBrakes': 'hardBrakes', 'extremeBrakes': 'extremeBrakes',
          'hardAccelerations': 'hardAccelerations', 'extremeAccelerations': 'extremeAccelerations'}
# SAE J1979: a stored r stands for (r + offset) * factor, 1 and 0 for those that are not here.
STORED = {2: (0.25, 0), 3: (100 / 255, 0), 4: (1, -40), 5: (100 / 255, 0), 7: (0.01, 0), 8: (1, -40), 9: (0.5, -128),
          10: (3, 0), 12: (0.78125, -128), 13: (0.78125, -128), 14: (0.78125, -128), 15: (0.78125, -128),
          24: (0.02266, 0)} | {i: (0.005, 0) for i in range(16, 24)}
# That in m/s, revolutions a second, K, Pa, kg/s.
BASE = {1: lambda v: v / 3.6, 2: lambda v: v / 60, 4: lambda v: v + 273.15, 8: lambda v: v + 273.15,
        6: lambda v: v * 1000, 10: lambda v: v * 1000, 7: lambda v: v / 1000}


def base(parameter, sample):
    factor, offset = STORED.get(parameter, (1, 0))
    return BASE.get(parameter, float)((math.floor(sample / factor - offset + 0.5) + offset) * factor)


wrong = []


def compare(where, said, computed):
    if said is None or computed is None:
        same = said is computed
    else:
        same = math.isclose(said, computed, rel_tol=1e-6, abs_tol=1e-9)
    if not same:
        wrong.append(f'{where}: said {said}, computed {computed}')


def figures(trips):
    if not trips:
        return {}
    metres = sum(t['distance'] for t in trips)
    seconds = sum(t['end'] - t['start'] for t in trips)
    bands = [sum(t['idleSeconds'] for t in trips)]
    bands += [sum(t['bandSeconds'][i] for t in trips) for i in range(4)]
    result = {'distance': metres, 'trips': len(trips), 'drivingTime': seconds,
              'averageSpeed': metres / seconds if seconds else None,
              'topSpeed': max(max(t['speeds'], default=0) for t in trips) / 3.6, 'topBandTime': bands[4],
              'topBandShare': bands[4] / sum(bands) if sum(bands) else None,
              'idleShare': bands[STANDSTILL] / sum(bands) if sum(bands) else None}
    for figure, key in EVENTS.items():
        result[figure] = sum(len(t[key]) for t in trips) / metres if metres else None
    return result


def check(where, said, trips):
    computed = figures(trips)
    for figure, value in said.items():
        if figure == 'fewTrips':
            if value != (len(trips) < 3):
                wrong.append(f'{where}: {len(trips)} trips are {"few" if value else "not few"}')
        elif figure == 'watchedTrips':
            compare(f'{where} {figure}', value, len(trips))
        elif figure in ('fuelTrips', 'unpricedFills'):  # no vehicle burns petrol, and nothing was filled in
            compare(f'{where} {figure}', value, 0)
        else:
            compare(f'{where} {figure}', value, computed.get(figure))


def groups(name, said, trips, key):
    by_key = {}
    for trip in trips:
        by_key.setdefault(key(trip), []).append(trip)
    if sorted(by_key) != sorted(each['key'] for each in said):
        wrong.append(f'{name}: {sorted(by_key)} were expected')
    for each in said:
        check(f'{name} {each["key"]}', each['figures'], by_key.get(each['key'], []))


def parameter(said, trips):
    """The speed is sampled, too, and compared with a threshold as the others are."""
    over = under = count = 0
    above, below = [], []
    for trip in trips:
        series = [{'parameter': 1, 'interval': trip['speedInterval'], 'samples': trip['speeds']}]
        for each in series + trip['series']:
            if each['parameter'] != said['parameter']:
                continue
            count += 1
            for sample in each['samples']:
                if sample is None:
                    continue
                value = base(said['parameter'], sample)
                over += each['interval'] * (value > said['threshold'])
                under += each['interval'] * (value < said['threshold'])
                (above if value > said['threshold'] else below if value < said['threshold'] else []).append(value)
    where = f'parameter {said["parameter"]}'
    compare(where + ' trips', said['trips'], count)
    compare(where + ' time over', said['timeOver'], over)
    compare(where + ' time under', said['timeUnder'], under)
    compare(where + ' highest', said['highest'], max(above, default=None))
    compare(where + ' lowest', said['lowest'], min(below, default=None))


def main():
    with open(sys.argv[1], encoding='utf-8') as file:
        said = json.load(file)
    trips = []
    for name in sys.argv[2:]:
        with open(name, encoding='utf-8') as file:
            trips += json.load(file)['trips']
    check('all', said['figures'], trips)
    for month in said['months']:
        in_it = [t for t in trips if time.strftime('%Y-%m', time.gmtime(t['start'])) == month['month']]
        check(month['month'], month['figures'], in_it)
    groups('vehicle', said['vehicles'], trips, lambda t: t['vin'])
    groups('driver', said['drivers'], trips, lambda t: str(t['driver']) if t['driver'] else '')
    for each in said['parameters']:
        parameter(each, trips)
    print('\n'.join(wrong) if wrong else f'{len(trips)} trips agree')
    return 1 if wrong else 0


if __name__ == '__main__':
    sys.exit(main())
