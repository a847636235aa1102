// SPDX-License-Identifier: GPL-2.0-only
// A GPIO chip of 64 lines. Debian's kernels have no simulated chip of the kernel's own.
//
// Each line has a folder in debugfs, kestrel-lines/00 to kestrel-lines/63. What is written into
// `pull`, 0 or 1, is the level that the wire has while the chip does not drive it. `value` is the
// level of the wire, `direction` in or out, and `drive` push-pull, open-drain or open-source. Line
// 3 is taken from the beginning, as the kernel does with a line that belongs to one of its own
// drivers.
#include <linux/debugfs.h>
#include <linux/gpio/consumer.h>
#include <linux/gpio/driver.h>
#include <linux/gpio/machine.h>
#include <linux/module.h>
#include <linux/platform_device.h>
#include <linux/spinlock.h>

enum { kLineCount = 64, kTakenLine = 3 };

struct line {
  bool output;
  bool driven;  // the level that the chip drives an output to
  bool pull;
  enum pin_config_param drive;
};

static struct line lines[kLineCount];
static DEFINE_SPINLOCK(lines_lock);
static struct gpio_chip chip;
static struct gpio_desc* taken;
static struct dentry* folder;
static struct platform_device* device;

static bool level_of(const struct line* line) {
  const bool pulls_only_low = line->drive == PIN_CONFIG_DRIVE_OPEN_DRAIN;
  const bool pulls_only_high = line->drive == PIN_CONFIG_DRIVE_OPEN_SOURCE;
  if (!line->output || (pulls_only_low && line->driven) || (pulls_only_high && !line->driven))
    return line->pull;
  return line->driven;
}

static int get_direction(struct gpio_chip* gc, unsigned int offset) {
  unsigned long flags;
  int direction;
  spin_lock_irqsave(&lines_lock, flags);
  direction = lines[offset].output ? GPIO_LINE_DIRECTION_OUT : GPIO_LINE_DIRECTION_IN;
  spin_unlock_irqrestore(&lines_lock, flags);
  return direction;
}

static int direction_input(struct gpio_chip* gc, unsigned int offset) {
  unsigned long flags;
  spin_lock_irqsave(&lines_lock, flags);
  lines[offset].output = false;
  spin_unlock_irqrestore(&lines_lock, flags);
  return 0;
}

static int direction_output(struct gpio_chip* gc, unsigned int offset, int value) {
  unsigned long flags;
  spin_lock_irqsave(&lines_lock, flags);
  lines[offset].output = true;
  lines[offset].driven = value != 0;
  spin_unlock_irqrestore(&lines_lock, flags);
  return 0;
}

static int get_value(struct gpio_chip* gc, unsigned int offset) {
  unsigned long flags;
  int level;
  spin_lock_irqsave(&lines_lock, flags);
  level = level_of(&lines[offset]);
  spin_unlock_irqrestore(&lines_lock, flags);
  return level;
}

static void set_value(struct gpio_chip* gc, unsigned int offset, int value) {
  unsigned long flags;
  spin_lock_irqsave(&lines_lock, flags);
  lines[offset].driven = value != 0;
  spin_unlock_irqrestore(&lines_lock, flags);
}

static int set_config(struct gpio_chip* gc, unsigned int offset, unsigned long config) {
  const enum pin_config_param drive = pinconf_to_config_param(config);
  unsigned long flags;
  if (drive != PIN_CONFIG_DRIVE_PUSH_PULL && drive != PIN_CONFIG_DRIVE_OPEN_DRAIN &&
      drive != PIN_CONFIG_DRIVE_OPEN_SOURCE)
    return -ENOTSUPP;
  spin_lock_irqsave(&lines_lock, flags);
  lines[offset].drive = drive;
  spin_unlock_irqrestore(&lines_lock, flags);
  return 0;
}

static int pull_get(void* line, u64* pull) {
  *pull = ((struct line*)line)->pull;
  return 0;
}

static int pull_set(void* line, u64 pull) {
  unsigned long flags;
  if (pull > 1) return -EINVAL;
  spin_lock_irqsave(&lines_lock, flags);
  ((struct line*)line)->pull = pull != 0;
  spin_unlock_irqrestore(&lines_lock, flags);
  return 0;
}
DEFINE_DEBUGFS_ATTRIBUTE(pull_file, pull_get, pull_set, "%llu\n");

static int value_get(void* line, u64* value) {
  *value = (u64)get_value(&chip, (unsigned int)((struct line*)line - lines));
  return 0;
}
DEFINE_DEBUGFS_ATTRIBUTE(value_file, value_get, NULL, "%llu\n");

static int direction_show(struct seq_file* file, void* unused) {
  seq_puts(file, ((struct line*)file->private)->output ? "out\n" : "in\n");
  return 0;
}
DEFINE_SHOW_ATTRIBUTE(direction);

static int drive_show(struct seq_file* file, void* unused) {
  switch (((struct line*)file->private)->drive) {
    case PIN_CONFIG_DRIVE_OPEN_DRAIN:
      seq_puts(file, "open-drain\n");
      break;
    case PIN_CONFIG_DRIVE_OPEN_SOURCE:
      seq_puts(file, "open-source\n");
      break;
    default:
      seq_puts(file, "push-pull\n");
  }
  return 0;
}
DEFINE_SHOW_ATTRIBUTE(drive);

static void make_files(void) {
  unsigned int number;
  folder = debugfs_create_dir("kestrel-lines", NULL);
  for (number = 0; number < kLineCount; ++number) {
    char name[8];
    struct dentry* of_line;
    snprintf(name, sizeof(name), "%02u", number);
    of_line = debugfs_create_dir(name, folder);
    debugfs_create_file_unsafe("pull", 0644, of_line, &lines[number], &pull_file);
    debugfs_create_file_unsafe("value", 0444, of_line, &lines[number], &value_file);
    debugfs_create_file("direction", 0444, of_line, &lines[number], &direction_fops);
    debugfs_create_file("drive", 0444, of_line, &lines[number], &drive_fops);
  }
}

static int add_chip(void) {
  int failure;
  chip.label = "kestrel-lines";
  chip.owner = THIS_MODULE;
  chip.parent = &device->dev;
  chip.base = -1;
  chip.ngpio = kLineCount;
  chip.get_direction = get_direction;
  chip.direction_input = direction_input;
  chip.direction_output = direction_output;
  chip.get = get_value;
  chip.set = set_value;
  chip.set_config = set_config;
  failure = gpiochip_add_data(&chip, NULL);
  if (failure) return failure;
  taken = gpiochip_request_own_desc(&chip, kTakenLine, "taken", GPIO_ACTIVE_HIGH, GPIOD_ASIS);
  if (IS_ERR(taken)) {
    gpiochip_remove(&chip);
    return PTR_ERR(taken);
  }
  return 0;
}

static int __init gpio_lines_init(void) {
  int failure;
  unsigned int number;
  for (number = 0; number < kLineCount; ++number) lines[number].drive = PIN_CONFIG_DRIVE_PUSH_PULL;
  device = platform_device_register_simple("kestrel-lines", PLATFORM_DEVID_NONE, NULL, 0);
  if (IS_ERR(device)) return PTR_ERR(device);
  failure = add_chip();
  if (failure) {
    platform_device_unregister(device);
    return failure;
  }
  make_files();
  return 0;
}

static void __exit gpio_lines_exit(void) {
  debugfs_remove(folder);
  gpiochip_free_own_desc(taken);
  gpiochip_remove(&chip);
  platform_device_unregister(device);
}

module_init(gpio_lines_init);
module_exit(gpio_lines_exit);
MODULE_DESCRIPTION("A GPIO chip whose wires are files");
MODULE_LICENSE("GPL");
