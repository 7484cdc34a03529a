// placeholder until this service lands
