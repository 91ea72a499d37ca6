#include "sample/catalogue.h"

#include <array>

namespace toplist::site {
namespace {

using enum Theme;

constexpr std::array kThemeNames = {"Outdoors", "On the water", "Kitchen", "Photography", "Games",
                                    "Garden",   "Crafts",       "Music",   "Night sky"};

constexpr CatalogueEntry kEntries[] = {
    {"alpine-trails", outdoors, "Alpine Trails;Alpine Trails: hut to hut",
     "Day walks and long routes above the tree line, with maps to print."},
    {"sourdough-diary", kitchen, "Sourdough Diary",
     "One starter, five years of bread, every loaf written down."},
    {"chess-nook", games, "The Chess Nook", "Annotated club games and a new puzzle each morning."},
    {"lens-and-light", photography, "Lens and Light;Lens and Light, weekly",
     "Landscape photographs and how each of them was taken."},
    {"cottage-borders", garden, "Cottage Borders",
     "Perennials for heavy soil, month by month.;What to sow, prune and divide this month."},
    {"northern-fells", outdoors, "Northern Fells", "Quiet paths away from the crowded summits."},
    {"paddle-notes", water, "Paddle Notes", "Canoe trips for families, with portages and camps."},
    {"backyard-astronomer", sky, "Backyard Astronomer",
     "What to see tonight with a small telescope."},
    {"stitch-by-stitch", crafts, "Stitch by Stitch", "Free knitting patterns, tested by readers."},
    {"fiddle-corner", music, "Fiddle Corner", "Folk tunes in notation, slow and at full speed."},
    {"one-pot-suppers", kitchen, "One Pot Suppers",
     "Weekday dinners with a single pot to wash up."},
    {"film-grain", photography, "Film Grain",
     "Developing black and white film at the kitchen sink."},
    {"ridge-runners", outdoors, "Ridge Runners", "Trail running for people who like hills."},
    {"kitchen-garden-club", garden, "Kitchen Garden Club;The Kitchen Garden Club",
     "Growing vegetables on forty square metres."},
    {"endgame-school", games, "Endgame School", "Rook endings explained until they stick."},
    {"tidewater-sailing", water, "Tidewater Sailing",
     "Cruising an old gaff cutter along the coast."},
    {"meteor-watch", sky, "Meteor Watch", "Shower calendars and reports from dark places."},
    {"woodturner", crafts, "The Woodturner", "Bowls, boxes and tool sharpening, with drawings."},
    {"slow-guitar", music, "Slow Guitar", "Fingerstyle pieces a bar at a time."},
    {"cheese-cellar", kitchen, "Cheese Cellar", "Making cheese at home, from fresh to blue."},
    {"hedgerow-walks", outdoors, "Hedgerow Walks",
     "Short circular walks from railway stations.;Country walks you can reach by train."},
    {"bird-hide", photography, "The Bird Hide", "Patient pictures of ordinary birds."},
    {"rose-ledger", garden, "Rose Ledger", "Three hundred roses compared in one garden."},
    {"tabletop-tales", games, "Tabletop Tales", "Reviews of board games after ten plays."},
    {"river-swim", water, "River Swim", "Safe places to swim in rivers and lakes."},
    {"quilt-room", crafts, "The Quilt Room", "Blocks, borders and a monthly sew-along."},
    {"choir-bench", music, "Choir Bench", "Practice tracks for amateur singers."},
    {"moon-atlas", sky, "Moon Atlas", "A crater for every evening of the year."},
    {"pickle-shelf", kitchen, "The Pickle Shelf", "Preserving what the garden gives in August."},
    {"bike-and-tent", outdoors, "Bike and Tent;Bike and Tent: slow touring",
     "Bicycle journeys at fifteen kilometres an hour."},
    {"macro-meadow", photography, "Macro Meadow", "Close-up photography of insects and flowers."},
    {"fern-house", garden, "Fern House", "Shade plants for pots and small yards."},
    {"go-stones", games, "Go Stones", "Joseki, reviews and a friendly weekly game."},
    {"lighthouse-log", water, "Lighthouse Log", "A walk to every lighthouse on the map."},
    {"clay-and-kiln", crafts, "Clay and Kiln", "Throwing, glazing and firing at home."},
    {"brass-band-days", music, "Brass Band Days", "Rehearsal notes from a village band."},
    {"variable-stars", sky, "Variable Stars", "Light curves made with a camera and patience."},
    {"dumpling-house", kitchen, "Dumpling House", "Folded, steamed and fried, from nine regions."},
    {"snowshoe-club", outdoors, "Snowshoe Club", "Winter tours with avalanche notes."},
    {"street-corners", photography, "Street Corners", "A town seen from its crossroads."},
    {"bee-yard", garden, "The Bee Yard", "Two hives, a notebook and honey in July."},
    {"puzzle-drawer", games, "The Puzzle Drawer", "Logic puzzles to print, easy to fiendish."},
    {"kite-beach", water, "Kite Beach", "Wind, sand and single-line kites."},
    {"bookbinders-bench", crafts, "Bookbinder's Bench", "Sewn bindings from paper to spine."},
    {"piano-evenings", music, "Piano Evenings", "Sonatinas for those who came back to it."},
    {"aurora-diary", sky, "Aurora Diary", "Northern lights logged since the last maximum."},
    {"spice-drawer", kitchen, "The Spice Drawer",
     "Where spices come from and what to do with them."},
    {"cave-and-gorge", outdoors, "Cave and Gorge", "Guided visits to caves, gorges and springs."},
    {"pinhole-days", photography, "Pinhole Days", "Photographs without a lens, cameras from tins."},
    {"orchard-year", garden, "Orchard Year", "Old apple varieties, grafting and cider."},
    {"correspondence-chess", games, "Correspondence Chess", "One move a day, games of a year."},
    {"rowing-club-notes", water, "Rowing Club Notes", "Technique, outings and regatta weekends."},
    {"linocut-studio", crafts, "Linocut Studio", "Prints cut, inked and pulled by hand."},
    {"record-crate", music, "The Record Crate", "Second-hand records worth the walk home."},
    {"comet-desk", sky, "Comet Desk", "Positions and pictures of comets in reach."},
    {"soup-calendar", kitchen, "Soup Calendar", "A soup for each week of the year."},
    {"hut-keeper", outdoors, "The Hut Keeper", "Letters from a mountain refuge."},
    {"night-frames", photography, "Night Frames", "Long exposures after the shops close."},
    {"alpine-rockery", garden, "Alpine Rockery", "Small plants for stony places."},
    {"model-harbour", crafts, "Model Harbour", "Ship models from plank to rigging."},
};

constexpr std::size_t kEntryCount = std::size(kEntries);

}  // namespace

const char* theme_name(Theme theme) { return kThemeNames.at(static_cast<std::size_t>(theme)); }

const CatalogueEntry& catalogue_entry(std::size_t index) { return kEntries[index % kEntryCount]; }

std::string catalogue_domain(std::size_t index) {
  std::string domain = catalogue_entry(index).name;
  const std::size_t round = index / kEntryCount;
  if (round > 0) domain += "-" + std::to_string(round + 1);
  return domain + ".example";
}

}  // namespace toplist::site
