"""Compares what "quobrix-cli statistics --format json" says with a computation of its own.

recompute_statistics.py STATISTICS FUEL DUMP...: DUMPs are what "quobrix-sim dump" says of the loggers that were counted,
FUEL has the VINs of vehicles that burn petrol ("petrol") and what was filled in ("fills"; m, US gallons, by time).
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


AIR_FLOW = 7  # g/s
AIR_TO_PETROL, GRAMS_A_GALLON = 14.7, 2798.7

wrong = []
fuel = {}


def compare(where, said, computed):
    if said is None or computed is None:
        same = said is computed
    else:
        same = math.isclose(said, computed, rel_tol=1e-6, abs_tol=1e-9)
    if not same:
        wrong.append(f'{where}: said {said}, computed {computed}')


def gallons(trip):
    """What a trip burnt, by the air that its engine took in; 0 where that was not measured."""
    series = [s for s in trip['series'] if s['parameter'] == AIR_FLOW]
    if trip['vin'] not in fuel['petrol'] or not series:
        return 0
    measured = [round(sample, 2) for sample in series[0]['samples'] if sample is not None]
    if len(measured) * series[0]['interval'] < 0.9 * (trip['end'] - trip['start']):
        return 0
    return sum(measured) * series[0]['interval'] / AIR_TO_PETROL / GRAMS_A_GALLON


def stretches():
    """From one full tank of a vehicle to the next: the last fill, m, gallons, price."""
    found = []
    for vin in {fill['vin'] for fill in fuel['fills']}:
        fills = [fill for fill in fuel['fills'] if fill['vin'] == vin]
        full = [i for i, fill in enumerate(fills) if fill['full']]
        for first, last in zip(full, full[1:]):
            used = fills[first + 1:last + 1]
            if not any(fill['missed'] for fill in used):
                prices = [fill['price'] for fill in used]
                found.append((fills[last], fills[last]['odometer'] - fills[first]['odometer'],
                              sum(fill['gallons'] for fill in used), None if None in prices else sum(prices)))
    return found


def filled(fits):
    """What the entries come to that FITS says belong together."""
    uses = [use for use in stretches() if fits(use[0])]
    priced = [use for use in uses if use[3] is not None]
    prices = [fill['price'] for fill in fuel['fills'] if fits(fill)]
    metres, burnt = sum(use[1] for use in uses), sum(use[2] for use in uses)
    paid = sum(price for price in prices if price is not None)
    return {'filledEfficiency': metres / burnt if burnt else None,
            'distancePrice': sum(use[3] for use in priced) / sum(use[1] for use in priced) if priced else None,
            'fuelPrice': paid if paid else None, 'unpricedFills': prices.count(None)}, metres, burnt


def agreement(vins, trips):
    """The fuel that trips tell for the distance of the entries, as a part of what was filled in."""
    told = known = 0
    for vin in vins:
        _, metres, burnt = filled(lambda fill: fill['vin'] == vin)
        measured = [t for t in trips if t['vin'] == vin and gallons(t) > 0 and t['distance'] > 0]
        driven = sum(t['distance'] for t in measured)
        if burnt and driven:
            told += metres * sum(map(gallons, measured)) / driven
            known += burnt
    return {'fuelAgreement': told / known if known else None}


def figures(trips):
    if not trips:
        return {}
    measured = [t for t in trips if gallons(t) > 0 and t['distance'] > 0]
    metres = sum(t['distance'] for t in trips)
    seconds = sum(t['end'] - t['start'] for t in trips)
    bands = [sum(t['idleSeconds'] for t in trips)]
    bands += [sum(t['bandSeconds'][i] for t in trips) for i in range(4)]
    result = {'distance': metres, 'trips': len(trips), 'drivingTime': seconds,
              'averageSpeed': metres / seconds if seconds else None,
              'topSpeed': max(max(t['speeds'], default=0) for t in trips) / 3.6, 'topBandTime': bands[4],
              'topBandShare': bands[4] / sum(bands) if sum(bands) else None,
              'idleShare': bands[STANDSTILL] / sum(bands) if sum(bands) else None}
    if measured:
        result['fuelEfficiency'] = sum(t['distance'] for t in measured) / sum(map(gallons, measured))
    for figure, key in EVENTS.items():
        result[figure] = sum(len(t[key]) for t in trips) / metres if metres else None
    return result


def check(where, said, trips, of_fuel=None):
    computed = figures(trips) | (of_fuel or {'unpricedFills': 0})
    for figure, value in said.items():
        if figure == 'fewTrips':
            if value != (len(trips) < 3):
                wrong.append(f'{where}: {len(trips)} trips are {"few" if value else "not few"}')
        elif figure == 'watchedTrips':
            compare(f'{where} {figure}', value, len(trips))
        elif figure == 'fuelTrips':
            compare(f'{where} {figure}', value, sum(gallons(t) > 0 and t['distance'] > 0 for t in trips))
        else:
            compare(f'{where} {figure}', value, computed.get(figure))


def groups(name, said, trips, key, of_fuel=lambda key: None):
    by_key = {}
    for trip in trips:
        by_key.setdefault(key(trip), []).append(trip)
    if sorted(by_key) != sorted(each['key'] for each in said):
        wrong.append(f'{name}: {sorted(by_key)} were expected')
    for each in said:
        check(f'{name} {each["key"]}', each['figures'], by_key.get(each['key'], []), of_fuel(each['key']))


def parameter(said, trips):
    """The speed is sampled, too, and compared with a threshold as the others are."""
    over = under = count = 0
    above, below = [], []
    for trip in trips:
        series = [{'parameter': 1, 'interval': trip['speedInterval'], 'samples': trip['speeds']}]
        for each in series + trip['series']:
            if each['parameter'] != said['parameter']:
                continue
            count += any(sample is not None for sample in each['samples'])
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
    with open(sys.argv[2], encoding='utf-8') as file:
        fuel.update(json.load(file))
    trips = []
    for name in sys.argv[3:]:
        with open(name, encoding='utf-8') as file:
            trips += json.load(file)['trips']
    vins = {t['vin'] for t in trips}
    check('all', said['figures'], trips, filled(lambda fill: True)[0] | agreement(vins, trips))
    for month in said['months']:
        in_it = [t for t in trips if time.strftime('%Y-%m', time.gmtime(t['start'])) == month['month']]
        check(month['month'], month['figures'], in_it,
              filled(lambda fill: time.strftime('%Y-%m', time.gmtime(fill['time'])) == month['month'])[0])
    groups('vehicle', said['vehicles'], trips, lambda t: t['vin'],
           lambda vin: filled(lambda fill: fill['vin'] == vin)[0] | agreement([vin], trips))
    groups('driver', said['drivers'], trips, lambda t: str(t['driver']) if t['driver'] else '')
    for each in said['parameters']:
        parameter(each, trips)
    print('\n'.join(wrong) if wrong else f'{len(trips)} trips agree')
    return 1 if wrong else 0


if __name__ == '__main__':
    sys.exit(main())
